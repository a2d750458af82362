// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/status_view.h"

#include "desk/cli/daemon_calls.h"
#include "desk/cli/journal_view.h"
#include "desk/cli/table.h"
#include "desk/cli/tail.h"
#include "desk/cli/time_text.h"
#include "desk/common/json.h"

namespace desk::cli {
namespace {

constexpr std::size_t JOURNAL_BYTES = 1 << 20;  // many times what a wait writes

std::string Shown(const Json::Value& value) {
  if (value.isBool()) {
    return value.asBool() ? "yes" : "no";
  }
  if (value.isObject() || value.isArray()) {
    return FormatJson(value);
  }
  return value.asString();
}

std::string DaemonText(const Json::Value& daemon) {
  if (!daemon.isObject()) {
    return Shown(daemon);
  }
  const std::string reason = OneLine(daemon["reason"].asString());
  const std::string restarts = ", " + Plural(daemon["restarts"].asInt64(), "restart");
  if (!daemon["running"].asBool()) {
    return "not running" + (reason.empty() ? "" : " (" + reason + ")") + restarts;
  }
  return "running, pid " + daemon["pid"].asString() + restarts +
         (reason.empty() ? "" : "; last end: " + reason);
}

/// The TV's time of day; empty when it is the machine's, give or take a moment.
std::string ClockText(const Json::Value& status) {
  const std::chrono::seconds clock(status["clock"].asInt64());
  const auto ahead = clock - WallClock();
  if (!status.isMember("clock") ||
      (status["speed"].asInt() <= 1 && ahead < std::chrono::seconds(2))) {
    return "";
  }
  return "\nclock    " + FormatTimestamp(clock) + ", " +
         DurationText(std::chrono::duration_cast<Timestamp>(ahead)) + " ahead of this machine";
}

std::string BusyText(const Json::Value& busy) {
  std::string text;
  for (const auto& wait : busy) {
    text += "\nbusy     " + OneLine(wait.asString());
  }
  return text;
}

}  // namespace

void AddBusy(Json::Value& status, const DeskPaths& paths) {
  status["busy"] = Json::Value(Json::arrayValue);
  if (!status["daemon"]["running"].asBool()) {
    return;
  }
  const std::chrono::seconds now(status["clock"].asInt64());
  const auto entries = SinceLastStart(SortedEntries(LastLines(paths.Journal(), JOURNAL_BYTES)));
  for (const auto& wait : WaitsOf(entries, now)) {
    status["busy"].append(wait);
  }
}

std::string StatusText(const Json::Value& status, const DeskPaths& paths) {
  const auto uptime = std::chrono::seconds(status["uptime"].asInt64());
  return "desk     " + paths.Root() + "\nTV       up, pid " + status["pid"].asString() +
         ", since " + DurationText(uptime) + "\ndaemon   " + DaemonText(status["daemon"]) +
         BusyText(status["busy"]) + "\nspeed    " + Shown(status["speed"]) + ClockText(status) +
         "\noffline  " + Shown(status["offline"]) + "\nsandbox  " + Shown(status["sandbox"]) +
         "\nmounts   " + OneLine(Shown(status["mounts"])) + "\n";
}

}  // namespace desk::cli
