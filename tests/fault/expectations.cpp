// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/expectations.h"

#include <sqlite3.h>

#include <algorithm>

#include "fake/control/calls.h"
#include "fault/paths.h"
#include "fault/store_faults.h"

namespace fault {
namespace {

constexpr int ANY_FAILURE = -4242;
constexpr int SILENT_SUCCESS = 0;
constexpr int APP_NOT_FOUND = static_cast<int>(0xFEF00021);
constexpr int LAUNCH_REJECTED = static_cast<int>(0xFEF00023);

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

bool Fits(const std::string& call, const std::string& args, const Request& request,
          const Report& report) {
  return call == request.fault->name &&
         (args.empty() || std::any_of(report.failed.begin(), report.failed.end(),
                                      [&](const auto& text) { return Contains(text, args); }));
}

/// Whether the line occurs more often than without the fault.
bool IsMore(const std::string& line, const std::vector<std::string>& log,
            const std::vector<std::string>& before) {
  return std::count(log.begin(), log.end(), line) > std::count(before.begin(), before.end(), line);
}

bool BeginsWith(const std::string& text, const std::string& begin) {
  return text.compare(0, begin.size(), begin) == 0;
}

bool HasAnswer(const Report& report, const std::string& begin) {
  return std::any_of(report.answers.begin(), report.answers.end(),
                     [&](const std::string& answer) { return BeginsWith(answer, begin); });
}

bool HasMore(const Report& report, const Report& faultless, const std::string& begin) {
  return std::any_of(report.log.begin(), report.log.end(), [&](const std::string& line) {
    return BeginsWith(line, begin) && IsMore(line, report.log, faultless.log);
  });
}

bool IsLoggedAs(const std::string& begin, const Report& report, const Report& faultless) {
  return HasAnswer(report, begin) || HasMore(report, faultless, begin);
}

bool IsLogged(const Request& request, const Report& report, const Report& faultless) {
  return IsLoggedAs("[ERROR]", report, faultless) ||
         std::any_of(LogExceptions().begin(), LogExceptions().end(),
                     [&](const LogException& entry) {
                       return Fits(entry.call, entry.args, request, report) &&
                              (entry.line.empty() || IsLoggedAs(entry.line, report, faultless));
                     });
}

bool MayMissPackages(const Request& request, const Report& report) {
  return FindPath(request.path).IsStart() &&
         std::any_of(MissedPackages().begin(), MissedPackages().end(),
                     [&](const MissedPackage& entry) {
                       return Fits(entry.call, entry.args, request, report) &&
                              (!entry.onlyForGood || request.fault->times == fake::FOREVER);
                     });
}

bool MayLeak(const std::string& kind, const Request& request) {
  return std::any_of(Leaks().begin(), Leaks().end(), [&](const Leak& leak) {
    return leak.kind == kind && (leak.path.empty() || leak.path == request.path) &&
           (leak.call.empty() || (request.fault && leak.call == request.fault->name));
  });
}

void CheckHandles(const Request& request, const Report& report, std::vector<std::string>& wrong) {
  for (const auto& [kind, count] : report.handles) {
    const bool isManager = kind == "package_manager" && FindPath(request.path).IsStart();
    if (count > (isManager ? 1 : 0) && !MayLeak(kind, request)) {
      wrong.push_back(std::to_string(count) + " handles of " + kind + " stay open");
    }
  }
}

}  // namespace

std::vector<int> ResultsOf(const std::string& call) {
  static const std::map<std::string, std::vector<int>> s_results = {
      {"FCStateAlarm::Destroy", {}},
      {"TVServiceAPI::Destroy", {}},
      {"g_main_loop_run", {}},
      {"sync", {}},
      {"sqlite3.xOpen", {SQLITE_CANTOPEN}},
      {"sqlite3.xRead", {SQLITE_IOERR_READ}},
      {"sqlite3.xWrite", {SQLITE_FULL, SQLITE_IOERR_WRITE}},
      {"sqlite3.xSync", {SQLITE_IOERR_FSYNC}},
      {"sqlite3.xTruncate", {SQLITE_IOERR_TRUNCATE}},
      {"sqlite3.xLock", {SQLITE_BUSY, SQLITE_IOERR_LOCK}},
      {"sqlite3.xDelete", {SQLITE_IOERR_DELETE}},
      {"app_control_send_launch_request", {ANY_FAILURE, APP_NOT_FOUND, LAUNCH_REJECTED}},
      {"app_control_create", {ANY_FAILURE, SILENT_SUCCESS}},
      {"app_manager_get_app_context", {ANY_FAILURE, SILENT_SUCCESS}},
      {"app_operation_get_current_app", {ANY_FAILURE, SILENT_SUCCESS}},
      {"app_info_create", {ANY_FAILURE, SILENT_SUCCESS}},
      {"package_info_get_version", {ANY_FAILURE, SILENT_SUCCESS}},
      {"package_manager_get_package_info", {ANY_FAILURE, SILENT_SUCCESS}},
      {"TVServiceAPI::CreateSignalSubscriber", {ANY_FAILURE, SILENT_SUCCESS}},
      {"was_get_all_app_list", {ANY_FAILURE, SILENT_SUCCESS}},
      {"was_get_app_info_by_tizenid", {ANY_FAILURE, SILENT_SUCCESS}},
      {"bundle_keyval_get_basic_val", {ANY_FAILURE, SILENT_SUCCESS}},
      {"vconf_get_int", {ANY_FAILURE, SILENT_SUCCESS}},
      {"PS_Mount", {ANY_FAILURE, SILENT_SUCCESS}},
      {"PS_Umount", {ANY_FAILURE, SILENT_SUCCESS}},
  };
  const auto found = s_results.find(call);
  return found == s_results.end() ? std::vector<int>{ANY_FAILURE} : found->second;
}

std::vector<std::string> WhatIsWrong(const Request& request, const Report& report,
                                     const Report& faultless) {
  std::vector<std::string> wrong;
  if (!report.end.empty()) {
    return {report.end};
  }
  if (request.fault && report.failures == 0) {
    // At start the tasks race, so the last uses do not occur in every run.
    const bool mayBeMissed = FindPath(request.path).IsStart() && request.fault->after > 0;
    return mayBeMissed ? wrong : std::vector<std::string>{"the call was not made to fail"};
  }
  const bool isSuccess = request.fault && request.fault->result == SILENT_SUCCESS;
  if (request.fault && !isSuccess && !IsLogged(request, report, faultless)) {
    wrong.push_back("no log line reports the failure");
  }
  if (!request.fault || !MayMissPackages(request, report)) {
    wrong.insert(wrong.end(), report.problems.begin(), report.problems.end());
  }
  CheckHandles(request, report, wrong);
  return wrong;
}

std::vector<std::string> WhatIsWrongAfterRestart(const Report& report) {
  return report.end.empty() ? report.problems : std::vector<std::string>{report.end};
}

}  // namespace fault
