// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <optional>
#include <string>

namespace desk {

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

/// Which lines are wanted.
struct LogFilter {
  char level = 'V';  ///< this one and the graver ones
  std::string text;  ///< has to stand in the line; empty for all
  /// A line of another form counts as grave enough: it is what a crash leaves.
  bool Wants(const std::string& line) const;
};

/// One of the letters V D I W E F, from the letter or the level's name, in any case. Throws Failure
/// (Usage).
char ParseLevel(const std::string& name);

}  // namespace desk
