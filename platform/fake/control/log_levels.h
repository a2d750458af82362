// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

/// The priorities that the daemon logged at.
namespace fake {

/// A priority and a level word ("[Info]", "" for a text without one) that were logged together.
struct LogLevel {
  int priority = 0;
  std::string word;
  std::string example;  ///< the first such text, without its head
};

/// Every pair that was logged since the process began. ClearLog() and Reset() do not forget any.
std::vector<LogLevel> LogLevels();

}  // namespace fake
