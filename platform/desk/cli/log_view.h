// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <optional>
#include <string>

namespace desk::cli {

/// One line of the daemon's log: "11-21 00:00:00.000   123   124 I/tag: text".
struct LogRecord {
  std::string time;
  int pid = 0;
  int tid = 0;
  char level = '?';
  std::string tag;
  std::string text;
};

/// Nothing for a line of another form.
std::optional<LogRecord> ParseLogLine(const std::string& line);
Json::Value ToJson(const LogRecord& record);

/// Selects lines of the log.
struct LogFilter {
  char level = 'V';  ///< this level and more severe ones
  std::string text;  ///< the line must contain it; empty for all lines
  /// A line of another form passes any level: a crash leaves such lines.
  bool Wants(const std::string& line) const;
};

/// Converts a letter or a level's name, in upper or lower case, to one of V D I W E F. Throws
/// Failure (Usage).
char ParseLevel(const std::string& name);

}  // namespace desk::cli
