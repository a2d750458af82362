// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "call/backend.h"
#include "desk/common/line_log.h"

namespace desk::client {

/// The record of the platform calls that the daemon makes: one JSON object per line, written when
/// the call ends. Only the daemon's process has one. Callable from any thread and from static
/// initialisers. A write error is ignored.
class Journal : public platform::Sink {
 public:
  /// Null in a process without a journal.
  static Journal* Get();

  /// Continues the numbers of an existing file.
  explicit Journal(const std::string& path);

  /// Numbers the call and takes the time and the name of the thread ("main" for the process's
  /// first). Calls are numbered in the order of Begin() and written in the order of End().
  void Begin(platform::CallRecord& record, const platform::Value* args, std::size_t count) override;
  /// Outputs follow the arguments in the same array.
  void AddOutput(platform::CallRecord& record, const platform::Value& value) override;
  void End(platform::CallRecord& record, const platform::Value& result) override;

 private:
  std::atomic<std::uint64_t> m_lastSeq;
  LineLog m_file;
};

}  // namespace desk::client
