// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "desk/cli/account.h"
#include "desk/cli/daemon_calls.h"

namespace desk::cli {

/// What verdicts and the schedule are made from.
struct Facts {
  DeskPaths paths;
  Timestamp now{};   ///< the TV's clock
  Json::Value dump;  ///< as `tv dump` prints it
  Evidence evidence;
  std::vector<LaunchRequest> requests;
};

/// The row of a package in the daemon's store; null when it has none.
const Json::Value& RowOf(const Json::Value& dump, const std::string& package);
/// The installed package; null when there is none.
const Json::Value& PackageIn(const Json::Value& dump, const std::string& package);
/// The app; null when there is none.
const Json::Value& AppIn(const Json::Value& dump, const std::string& app);

/// When a service app is due, as its row says; empty when it is always due.
std::string DueTextOf(const Json::Value& row);

/// How an app's last launch ended, or why there was none: "launched, ended with exit status 1:
/// last line". Empty when the app was never launched and nothing says why.
std::string RunVerdict(const Facts& facts, const std::string& app);

/// One sentence for each thing that the daemon does for the package, or for the one app: what it is
/// for ("ch_feeder_custom") and the verdict ("not launched: expiration_date_str is in 42 minutes").
struct Verdict {
  std::string about;
  std::string text;
};
std::vector<Verdict> VerdictsOf(const Facts& facts, const std::string& package,
                                const std::string& app);

}  // namespace desk::cli
