// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <vector>

#include "desk/common/timestamp.h"

namespace desk::cli {

/// A launch that the daemon requested.
struct LaunchRequest {
  Timestamp time{};
  std::string app;
  std::string thread;
  bool background = false;
  int result = 0;  ///< of app_control; 0 when it was accepted
};

/// The requests in the journal, in their order. entries are in ascending order of their numbers.
std::vector<LaunchRequest> LaunchRequestsIn(const std::vector<Json::Value>& entries);

/// The last request for an app, or null.
const LaunchRequest* LastRequest(const std::vector<LaunchRequest>& requests,
                                 const std::string& app);

/// The entries of the daemon's present run: from its first task on.
std::vector<Json::Value> SinceLastStart(const std::vector<Json::Value>& entries);

/// What the daemon waits for at that time, one text each: "waiting for guidebackg.Guide to load, 12
/// of 20 s". Empty when it waits for nothing. entries are those of its present run.
std::vector<std::string> WaitsOf(const std::vector<Json::Value>& entries, Timestamp now);

/// When the schedule's timer fires next; nothing when it does not run. entries are those of the
/// daemon's present run.
std::optional<Timestamp> NextTick(const std::vector<Json::Value>& entries);

}  // namespace desk::cli
