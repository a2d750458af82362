// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/schedule.h"

#include <algorithm>

#include "desk/cli/result_names.h"
#include "desk/cli/time_text.h"

namespace desk::cli {
namespace {

constexpr const char* APP_TYPE = "ch_feeder_custom";
constexpr const char* NETWORK_TIME_KEY = "memory/menu/network/set_time";

Json::Value SecondsUntil(Timestamp time, Timestamp now) {
  const auto left = std::chrono::duration_cast<std::chrono::seconds>(time - now);
  return Json::Value(static_cast<Json::Int64>(std::max<std::int64_t>(0, left.count())));
}

bool IsScheduled(const Json::Value& row) {
  const Json::Value& variables = row["variables"];
  return variables.isObject() && variables["orv_type"].isObject() &&
         !variables["orv_type"][APP_TYPE].asString().empty();
}

/// A request that failed leaves no run behind.
void AddLastLaunch(const Facts& facts, Json::Value& app) {
  const std::string id = app["app"].asString();
  const AppRun* run = LastRun(facts.evidence.runs, id);
  const LaunchRequest* request = LastRequest(facts.requests, id);
  app["running"] = run != nullptr && !run->ended;
  if (request != nullptr && request->result != 0 &&
      (run == nullptr || request->time > run->launched)) {
    app["last_launch"] = FormatTimestamp(request->time);
    app["end"] = "not started: " + AppControlResultName(request->result);
  } else if (run != nullptr) {
    app["last_launch"] = FormatTimestamp(run->launched);
    app["pid"] = run->pid;
    app["end"] = run->end;
  }
}

Json::Value DescribeApp(const Facts& facts, const Json::Value& row) {
  Json::Value app(Json::objectValue);
  app["app"] = row["service_id"].asString();
  app["package"] = row["package_id"].asString();
  app["due"] = DueTextOf(row);
  if (const auto due = ParseTimestamp(app["due"].asString())) {
    app["due_in"] = SecondsUntil(*due, facts.now);
  }
  AddLastLaunch(facts, app);
  return app;
}

std::string TickText(const Json::Value& schedule) {
  const std::string in = DurationText(std::chrono::seconds(schedule["next_tick_in"].asInt64()));
  return "the next tick, in " + in;
}

std::string WaitsFor(const Facts& facts, const Json::Value& schedule) {
  const Json::Value& daemon = facts.dump["daemon"];
  if (!daemon["running"].asBool()) {
    return "the daemon, which does not run: `tv daemon start` starts it";
  }
  if (schedule["apps"].empty()) {
    return std::string("a package with the app type ") + APP_TYPE;
  }
  if (!schedule.isMember("next_tick")) {
    return facts.dump["keys"][NETWORK_TIME_KEY] == Json::Value(1)
               ? std::string("its start")
               : std::string("network time: ") + NETWORK_TIME_KEY + " is not 1";
  }
  std::string running;
  for (const auto& app : schedule["apps"]) {
    if (app["running"].asBool()) {
      running += (running.empty() ? "" : ", ") + app["app"].asString();
    }
  }
  return running.empty() ? TickText(schedule) : running + " to finish, or " + TickText(schedule);
}

}  // namespace

Json::Value DescribeSchedule(const Facts& facts) {
  Json::Value schedule(Json::objectValue);
  schedule["apps"] = Json::Value(Json::arrayValue);
  for (const auto& row : facts.dump["store"]) {
    if (IsScheduled(row)) {
      schedule["apps"].append(DescribeApp(facts, row));
    }
  }
  const auto tick = NextTick(SinceLastStart(facts.evidence.journal));
  if (tick && facts.dump["daemon"]["running"].asBool()) {
    schedule["next_tick"] = FormatTimestamp(*tick);
    schedule["next_tick_in"] = SecondsUntil(*tick, facts.now);
  }
  schedule["waits_for"] = WaitsFor(facts, schedule);
  return schedule;
}

}  // namespace desk::cli
