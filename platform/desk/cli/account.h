// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "desk/cli/app_runs.h"

namespace desk::cli {

/// What the logs of a desk hold.
struct Evidence {
  std::vector<std::string> daemonLog;
  std::vector<std::string> tvLog;
  std::vector<Json::Value> journal;  ///< in ascending order of their numbers
  std::vector<AppRun> runs;

  /// Reads the last 32 MiB of each. A file that does not exist is empty.
  static Evidence Read(const DeskPaths& paths);
};

/// What an account is about: a package with all its apps, or one app.
class Subject {
 public:
  /// app is empty for a whole package; package is empty for an app without one. other is a text
  /// that stands for the subject too, such as its due time; empty for none.
  Subject(std::string package, std::string app, std::string other);

  /// Whether the text names the subject. "abc" is not named by "abcd", and a package is not named
  /// by another app's id when the subject is an app.
  bool IsNamedIn(const std::string& text) const;
  bool Covers(const std::string& app) const;

 private:
  std::string m_package;
  std::string m_app;
  std::string m_other;
};

/// One line of an account.
struct AccountLine {
  Timestamp time{};
  std::string source;  ///< "daemon", "call", "desk-tv" or "output"
  std::string text;
};

/// What the logs say about the subject, newest first. All times are of the TV's clock; now is its
/// present time.
std::vector<AccountLine> AccountOf(const Evidence& evidence, const DeskPaths& paths,
                                   const Subject& subject, Timestamp now);

/// The time of a line of the daemon's log, which has no year: the last such moment that is not
/// after `now` by more than a day.
std::optional<Timestamp> LogTime(const std::string& text, Timestamp now);

}  // namespace desk::cli
