// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/verdict.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "desk/cli/result_names.h"
#include "desk/cli/time_text.h"
#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* CUSTOM_FEEDER = "ch_feeder_custom";
constexpr const char* STANDARD_FEEDER = "ch_feeder_standard";
constexpr const char* NETWORK_TIME_KEY = "memory/menu/network/set_time";
constexpr std::size_t OUTPUT_LINES = 3;

const Json::Value& Find(const Json::Value& list, const char* member, const std::string& value) {
  const auto found = std::find_if(list.begin(), list.end(), [&](const Json::Value& item) {
    return item[member].asString() == value;
  });
  return found == list.end() ? Json::Value::nullSingleton() : *found;
}

std::string LastOutput(const Facts& facts, const AppRun& run) {
  std::string text;
  for (const auto& line : OutputOf(facts.paths, run, OUTPUT_LINES)) {
    text += (text.empty() ? "" : " | ") + line;
  }
  return text.empty() ? "; it printed nothing" : ": " + text;
}

/// Where a file of a URL lies on this machine; empty for another kind of URL.
std::string FileBehind(const DeskPaths& paths, const std::string& url) {
  if (url.compare(0, 5, "file:") != 0) {
    return "";
  }
  const auto start = url.find_first_not_of('/', 5);
  return start == std::string::npos ? paths.Root() : paths.Root() + "/" + url.substr(start);
}

bool HoldsJson(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  try {
    ParseJson(text);
    return !text.empty();
  } catch (const DeskError&) {
    return false;
  }
}

std::string FileTrouble(const Facts& facts, const std::string& package, const std::string& url) {
  const std::string path = FileBehind(facts.paths, url);
  if (path.empty() || HoldsJson(path)) {
    return "";
  }
  const std::string name = fs::path(path).filename().string();
  std::error_code error;
  if (fs::exists(path, error)) {
    return name + " is not JSON";
  }
  const Json::Value& row = RowOf(facts.dump, package);
  const std::string image = row["widget_id"].asString() + ".tmg";
  if (!fs::exists(facts.paths.Package(package) + "/res/" + image, error)) {
    return "the package has no image " + image;
  }
  if (!fs::exists(facts.paths.DaemonSharedData() + "/hbbtv_app/" + package, error)) {
    return "the image " + image + " was not unpacked";
  }
  return name + " is not in the image";
}

std::string FeedVerdict(const Facts& facts, const std::string& package) {
  const Json::Value& record = Find(facts.dump["channels"], "pkg_id", package);
  if (record.isNull()) {
    return "not fed: the channel framework has no record of the package";
  }
  for (const char* url : {"channel_data_url", "schedule_data_url"}) {
    const std::string trouble = FileTrouble(facts, package, record[url].asString());
    if (!trouble.empty()) {
      return "not fed: " + trouble;
    }
  }
  return "fed: it is the channel " + record["service_id"].asString();
}

std::string DueVerdict(const Facts& facts, const std::string& dueText) {
  const auto due = ParseTimestamp(dueText);
  if (!dueText.empty() && !due) {
    return "expiration_date_str is \"" + dueText + "\", which is not a time";
  }
  if (due && *due > facts.now) {
    return "expiration_date_str is in " + DurationText(*due - facts.now);
  }
  return "";
}

std::string NeverLaunched(const Facts& facts, const std::string& due) {
  if (facts.dump["keys"][NETWORK_TIME_KEY] != Json::Value(1)) {
    return std::string("not launched: the TV has no network time (") + NETWORK_TIME_KEY +
           " is not 1)";
  }
  return "not launched: " + (due.empty() ? "its turn has not come yet; see `tv schedule`" : due);
}

std::string ServiceVerdict(const Facts& facts, const Json::Value& row) {
  const std::string app = row["service_id"].asString();
  if (app.empty()) {
    return "not launched: the package has no service app";
  }
  const std::string run = RunVerdict(facts, app);
  const std::string due = DueVerdict(facts, DueTextOf(row));
  if (run.empty()) {
    return NeverLaunched(facts, due);
  }
  return due.empty() ? run : run + "; " + due;
}

std::string TypeVerdict(const Facts& facts, const Json::Value& row, const std::string& type) {
  if (type == CUSTOM_FEEDER) {
    return ServiceVerdict(facts, row);
  }
  if (type == STANDARD_FEEDER) {
    return FeedVerdict(facts, row["package_id"].asString());
  }
  const std::string run = RunVerdict(facts, row["app_id"].asString());
  return run.empty() ? "not launched: the daemon has not requested it" : run;
}

std::vector<std::string> TypesOf(const Json::Value& row) {
  const Json::Value& variables = row["variables"];
  if (!variables.isObject() || !variables["orv_type"].isObject()) {
    return {};
  }
  return variables["orv_type"].getMemberNames();
}

/// Why the daemon does nothing at all for the package; empty when it does.
std::string GeneralTrouble(const Facts& facts, const std::string& package) {
  const Json::Value& daemon = facts.dump["daemon"];
  if (!daemon["running"].asBool()) {
    const std::string reason = daemon["reason"].asString();
    return "nothing is done: the daemon does not run" +
           (reason.empty() ? "" : " (" + reason + ")") + "; `tv daemon start` starts it";
  }
  const Json::Value& row = RowOf(facts.dump, package);
  if (row.isNull()) {
    return "not known to the daemon: `tv explain " + package + "` shows what it makes of it";
  }
  if (TypesOf(row).empty()) {
    return "its row in the store names no app type: `tv store` shows the row";
  }
  return "";
}

}  // namespace

const Json::Value& RowOf(const Json::Value& dump, const std::string& package) {
  return Find(dump["store"], "package_id", package);
}

const Json::Value& PackageIn(const Json::Value& dump, const std::string& package) {
  return Find(dump["packages"], "id", package);
}

const Json::Value& AppIn(const Json::Value& dump, const std::string& app) {
  return Find(dump["apps"], "id", app);
}

std::string DueTextOf(const Json::Value& row) {
  const Json::Value& variables = row["variables"];
  const Json::Value& data = variables.isObject() ? variables["orv_data"] : variables;
  return data.isObject() ? data["expiration_date_str"].asString() : "";
}

std::string RunVerdict(const Facts& facts, const std::string& app) {
  const AppRun* run = LastRun(facts.evidence.runs, app);
  const LaunchRequest* request = LastRequest(facts.requests, app);
  if (request != nullptr && request->result != 0 &&
      (run == nullptr || request->time > run->launched)) {
    return "not launched: " + AppControlResultName(request->result);
  }
  if (run == nullptr) {
    return "";
  }
  if (run->pid == 0) {
    return "not launched: " + run->end;
  }
  if (!run->ended) {
    return "launched " + DurationText(facts.now - run->launched) + " ago, runs (pid " +
           std::to_string(run->pid) + ")";
  }
  return "launched, ended with " + run->end + LastOutput(facts, *run);
}

std::vector<Verdict> VerdictsOf(const Facts& facts, const std::string& package,
                                const std::string& app) {
  if (package.empty()) {
    const std::string run = RunVerdict(facts, app);
    return {{app, run.empty() ? "not launched: no launch of it was requested" : run}};
  }
  const std::string trouble = GeneralTrouble(facts, package);
  if (!trouble.empty()) {
    const std::string run = app.empty() ? "" : RunVerdict(facts, app);
    return {{package, trouble + (run.empty() ? "" : "; " + run)}};
  }
  const Json::Value& row = RowOf(facts.dump, package);
  std::vector<Verdict> verdicts;
  for (const auto& type : TypesOf(row)) {
    // The types of a package are about its service app or about its UI app.
    const bool service = type == CUSTOM_FEEDER;
    if (app.empty() || app == row[service ? "service_id" : "app_id"].asString()) {
      verdicts.push_back({type, TypeVerdict(facts, row, type)});
    }
  }
  if (verdicts.empty()) {
    verdicts.push_back({app, "not launched: no app type of the package is about this app"});
  }
  return verdicts;
}

}  // namespace desk::cli
