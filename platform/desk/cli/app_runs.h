// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "desk/common/paths.h"
#include "desk/common/timestamp.h"

namespace desk::cli {

/// One line of desk-tv's log.
struct TvLogLine {
  Timestamp time{};
  std::string text;
};

/// Nothing for a line without a time.
std::optional<TvLogLine> ParseTvLogLine(const std::string& line);

/// One launch of an app and how it ended, as desk-tv's log has it.
struct AppRun {
  std::string app;
  Timestamp launched{};
  int pid = 0;                                 ///< 0: no process was started
  std::uintmax_t outputFrom = 0;               ///< where its output begins in its file
  std::optional<std::uintmax_t> outputBefore;  ///< where that of the next run begins
  std::optional<Timestamp> ended;              ///< nothing while it runs
  std::string end;                             ///< "exit status 3", or why it was not started
};

/// The runs of all apps in the order of their launches.
std::vector<AppRun> AppRunsIn(const std::vector<std::string>& tvLog);

/// The last run of an app, or null.
const AppRun* LastRun(const std::vector<AppRun>& runs, const std::string& app);

/// The last lines that a run printed; empty when it printed nothing.
std::vector<std::string> OutputOf(const DeskPaths& paths, const AppRun& run, std::size_t most);

}  // namespace desk::cli
