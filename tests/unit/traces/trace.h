// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <sstream>
#include <string>

/// Everything that an operation did, as text: platform calls, log records and SQL statements in one
/// order, what it returned or threw, and every line of the state that it changed. Compared as a
/// whole with a file, so one step too many, one too few or another order differs.
class Trace {
 public:
  /// Prints the state, one fact per line; the first word names what it belongs to. Runs without
  /// leaving calls, records or statements behind.
  using PrintState = void (*)(std::ostream& stream);

  explicit Trace(PrintState printState);

  /// Runs the operation and appends what it did. `Result` is any type that a stream accepts.
  template <class Operation>
  void Do(const std::string& title, Operation operation) {
    Run(title, [&](std::ostream& result) {
      if constexpr (std::is_void_v<decltype(operation())>) {
        operation();
      } else {
        result << std::boolalpha << "= " << operation() << "\n";
      }
    });
  }
  /// Changes the state from outside the daemon: nothing is appended, and the changes are not
  /// reported by the next Do().
  void Prepare(const std::function<void()>& change);

  /// Fails the test unless the text is that of expected/<name>.txt. A failure writes what was found
  /// below the build directory; after an intended change, read the difference and copy that file.
  void Compare(const std::string& name) const;

 private:
  void Run(const std::string& title, const std::function<void(std::ostream&)>& operation);
  std::string State() const;

  PrintState m_printState;
  std::string m_state;
  std::ostringstream m_text;
};

/// Parts of a state, for PrintState.
namespace traces {

void PrintKeys(std::ostream& stream, const std::initializer_list<const char*>& keys);
/// Timers, open handles, followed keys, launches that are queued: what a platform call leaves open.
void PrintPlatform(std::ostream& stream, const std::initializer_list<const char*>& followedKeys);
void PrintOperations(std::ostream& stream);
/// The directory ends in "/".
void PrintFiles(std::ostream& stream, const std::string& directory);
/// The rows of the daemon's store, and the statements and connections that are open.
void PrintStore(std::ostream& stream);

}  // namespace traces
