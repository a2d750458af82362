// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <dlog.h>

#include <string>
#include <thread>
#include <vector>

/// What the daemon logged. With the environment variable ORV_TEST_LOG, every record is also written
/// to standard error.
namespace fake {

struct LogRecord {
  unsigned long seq = 0;  ///< position in the common order of calls and log records
  int priority = 0;
  std::string tag;
  std::string text;  ///< whole, with head and newline
  std::string thread;
  std::thread::id threadID;
};

std::vector<LogRecord> Logs();
/// The texts after the head "path: function(line) > ", without the newline at the end.
std::vector<std::string> LogTexts();
std::vector<std::string> LogTexts(int priority);
/// The same of one text; the whole text when it has no such head.
std::string WithoutHead(const std::string& text);
void ClearLog();

}  // namespace fake
