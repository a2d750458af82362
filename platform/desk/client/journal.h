// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "common/line_log.h"

namespace desk {

/// The record of the platform calls that the daemon makes: one JSON object a line. Only the
/// daemon's process keeps one. Callable from any thread and from static initialisers; a failure to
/// write is silent.
class Journal {
 public:
  struct Entry {
    std::uint64_t seq = 0;
    std::string time;
    const char* call = "";
    std::string args;    ///< elements of a JSON array, with commas between
    std::string result;  ///< JSON text
  };

  /// Null in a process that keeps no journal.
  static Journal* Get();

  /// Counts on after the last entry of a file that is there already.
  explicit Journal(const std::string& path);

  /// Numbers a call that begins now and notes the time. Entries are in the order of Begin() by
  /// their numbers, and in that of Write() by their places in the file.
  void Begin(Entry& entry);
  /// Adds the line, with the name of the calling thread; "main" for the process's first.
  void Write(const Entry& entry);

 private:
  std::atomic<std::uint64_t> m_lastSeq;
  LineLog m_file;
};

/// Appends the text as a JSON string. Bytes that are no UTF-8 go out as they are.
void AppendQuoted(std::string& out, const std::string& text);

}  // namespace desk
