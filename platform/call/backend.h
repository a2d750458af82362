// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>

#include "call/value.h"

/// What a platform supplies for its calls: where they are recorded, and which of them fail.
namespace platform {

/// A call while it runs. It lives on the stack of the call; number and text belong to the sink,
/// which may keep there what it needs until the end of the call.
struct CallRecord {
  const char* name = "";  ///< as in the platform's header
  std::uint64_t number = 0;
  std::string text;
};

/// Records calls. Callable from any thread; the three functions run on the thread of the call.
class Sink {
 public:
  virtual ~Sink() = default;
  virtual void Begin(CallRecord& record, const Value* args, std::size_t count) = 0;
  /// A value that the call gives back through a pointer.
  virtual void AddOutput(CallRecord& record, const Value& value) = 0;
  virtual void End(CallRecord& record, const Value& result) = 0;
};

/// Callable from any thread.
class Backend {
 public:
  virtual ~Backend() = default;

  /// Null while calls are not recorded. Asked once for each call.
  virtual Sink* GetSink() = 0;
  /// Uses up one fault of the call. Nothing when the call succeeds; otherwise its result, which is
  /// usualFailure when the fault names none.
  virtual std::optional<int> TakeFault(const char* call, int usualFailure) = 0;
  /// Called from the handler of an exception that the work of the call threw. When it returns, the
  /// call returns its usual failure. It may rethrow the exception with "throw;".
  virtual void OnException(const char* call, const std::exception& exception) = 0;
};

}  // namespace platform
