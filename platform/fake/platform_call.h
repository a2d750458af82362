// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "call/call.h"
#include "call/handle_table.h"

/// How the fake's own sources record their calls and count their handles.
namespace fake {

/// Uses up one late fault of the name, see FailAfterwards().
std::optional<int> TakeLateFault(const char* name);

/// Calls are kept in memory, for Calls(). An exception of the work reaches the caller.
platform::Backend& GetBackend();

/// The usual failure of a call whose faults always name a result.
constexpr int FAILURE = -1;

/// A call of a platform interface.
class PlatformCall : public platform::Call {
 public:
  template <typename... Args>
  explicit PlatformCall(const char* name, const Args&... args)
      : platform::Call(&GetBackend(), name, args...), m_name(name) {}

  using platform::Call::Run;
  template <typename Work>
  int Run(int failure, Work work) {
    if (const std::optional<int> result = TakeLateFault(m_name)) {
      work();
      return Return(*result);
    }
    return platform::Call::Run(failure, work);
  }

 private:
  const char* m_name;
};

/// Counts a kind of handle for OpenHandles().
void CountHandle(const char* kind, int change);

/// The handles of one kind, counted.
template <typename Handle, typename T>
class Handles : public platform::HandleTable<Handle, T> {
 public:
  explicit Handles(const char* kind) : platform::HandleTable<Handle, T>(kind, CountHandle) {}
};

/// Uses up one fault of the name.
std::optional<int> TakeFault(const char* name);
/// The next position in the common order of calls and log records.
unsigned long NextSequence();
std::string ThreadName();

}  // namespace fake
