// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

/// How the fake's own sources record a call and ask for its fault.
namespace fake {

bool IsRecording();
/// The number names the call in EndCall(); 0 while nothing is recorded.
unsigned long BeginCall(const std::string& name, std::vector<std::string> args);
void EndCall(unsigned long number, const std::string& result);
/// Uses up one fault of the name, or one of the uses that go well before it.
std::optional<int> TakeFault(const std::string& name);
/// The next place in the common order of calls and log records.
unsigned long NextSequence();
std::string ThreadName();

inline std::string Text(const char* text) {
  return text == nullptr ? "null" : text;
}
inline std::string Text(const std::string& text) {
  return text;
}
inline std::string Text(bool flag) {
  return flag ? "true" : "false";
}
inline std::string Text(int number) {
  return std::to_string(number);
}
inline std::string Text(unsigned int number) {
  return std::to_string(number);
}
inline std::string Text(unsigned long number) {
  return std::to_string(number);
}
/// For functions and user data, whose addresses say nothing.
template <typename T>
std::string Presence(T pointer) {
  return pointer == nullptr ? "null" : "set";
}

/// One call through the wall, from its first line to its return.
class Recorder {
 public:
  template <typename... Args>
  explicit Recorder(const char* name, const Args&... args) {
    if (IsRecording()) {
      m_number = BeginCall(name, std::vector<std::string>{Text(args)...});
    }
    m_fault = TakeFault(name);
  }

  bool Fails() const { return m_fault.has_value(); }
  /// The fault's result. Only when it fails.
  int Fault() const { return *m_fault; }
  /// The same, on its way to the caller.
  int ReturnFault() { return Return(*m_fault); }
  /// The same as bool.
  bool ReturnBoolFault() { return Return(*m_fault > 0); }

  /// Any other result, on its way to the caller.
  template <typename T>
  T Return(T result) {
    return ReturnAs(result, Text(result));
  }
  template <typename T>
  T ReturnAs(T result, const std::string& text) {
    EndCall(m_number, text);
    return result;
  }
  void ReturnNothing() { EndCall(m_number, "void"); }

 private:
  unsigned long m_number = 0;
  std::optional<int> m_fault;
};

}  // namespace fake
