// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <dlog.h>

#include <string>
#include <thread>
#include <vector>

/// What the daemon logged.
namespace fake {

struct LogRecord {
  unsigned long seq = 0;  ///< place in the order of calls and log records alike
  int priority = 0;
  std::string tag;
  std::string text;  ///< whole, with head and newline
  std::string thread;
  std::thread::id threadID;
};

std::vector<LogRecord> Logs();
/// The texts behind the head "path: function(line) > ", without the closing newline.
std::vector<std::string> LogTexts();
std::vector<std::string> LogTexts(int priority);
/// The text of one record, as above; whole when it has no such head.
std::string WithoutHead(const std::string& text);
void ClearLog();
/// Also writes every record to standard error, for a look at a failing test. On as well while the
/// environment variable ORV_TEST_LOG is set.
void EchoLog(bool enabled);

}  // namespace fake
