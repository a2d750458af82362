// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "framework/hooks.h"

namespace framework {

inline std::string HookText(const char* text) {
  return text == nullptr ? "null" : text;
}
inline std::string HookText(const std::string& text) {
  return text;
}
inline std::string HookText(bool flag) {
  return flag ? "true" : "false";
}
inline std::string HookText(int number) {
  return std::to_string(number);
}
inline std::string HookText(unsigned int number) {
  return std::to_string(number);
}

/// One call, told to the hooks when there are any. Texts are made only then.
class HookedCall {
 public:
  template <typename... Args>
  explicit HookedCall(const char* name, const Args&... args) : m_hooks(GetHooks()), m_name(name) {
    if (m_hooks != nullptr) {
      m_number = m_hooks->begin(name, std::vector<std::string>{HookText(args)...});
    }
  }

  /// Once per call: a fault is used up by being asked for.
  bool Fails(int* result) { return m_hooks != nullptr && m_hooks->fails(m_name, result); }

  /// The function's result, on its way to the caller.
  template <typename T>
  T Return(T result) {
    if (m_hooks != nullptr) {
      m_hooks->end(m_number, HookText(result));
    }
    return result;
  }

 private:
  const Hooks* m_hooks;
  const char* m_name;
  unsigned long m_number = 0;
};

}  // namespace framework
