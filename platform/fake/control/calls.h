// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <thread>
#include <vector>

/// The platform in memory. It holds state and records calls; expectations belong to the test.
/// Everything here is callable from any thread.
namespace fake {

/// One platform call, named as in the platform's header: "vconf_set_str",
/// "FCOrvAppInfoAPI::CreateAppInfo", "FCTask::Send". Also "kill", "sync", "malloc_trim",
/// "g_timeout_add", "g_timeout_add_seconds", "g_source_remove" and "g_main_loop_new", "_run",
/// "_unref". Log records, the clock and the waits are not in the list.
struct Call {
  unsigned long seq = 0;  ///< position in the common order of calls and log records
  std::string name;
  /// As platform::FormatText() writes them: texts unchanged, "null", decimal numbers, "true" and
  /// "false", a handle as its kind and number ("app_control#1"), any other pointer or a function as
  /// "set". Pure output parameters are omitted.
  std::vector<std::string> args;
  /// What the call returned, in the same form; "void" for nothing. Empty while the call runs.
  std::string result;
  std::string thread;  ///< name of the thread, as the kernel knows it
  std::thread::id threadID;
};

/// All calls so far, in the order in which they began, including those of static initialisers.
std::vector<Call> Calls();
std::vector<Call> Calls(const std::string& name);
std::size_t CallCount(const std::string& name);
/// The names only.
std::vector<std::string> CallNames();
/// "vconf_set_int(db/x, 3) = 0"
std::string ToText(const Call& call);
std::vector<std::string> CallTexts();
/// Only the calls with one of these names, in their common order.
std::vector<std::string> CallTexts(const std::vector<std::string>& names);
void ClearCalls();
/// Switch recording off where a test makes millions of calls. Faults work nevertheless.
void SetRecording(bool enabled);

constexpr int FOREVER = -1;

/// Makes the call fail `times` times, after it has succeeded `after` times. A failed call does
/// nothing, returns `result` and leaves its output parameters untouched (also for a result of 0:
/// handles that a success would set are null then). A call that returns a pointer returns null; one
/// that returns a bool returns result > 0. Several faults of one name follow each other in the
/// order of Fail(). Calls without a result (except bundle_foreach) and the Destroy of tasks and
/// alarms cannot fail.
void Fail(const std::string& name, int result = -1, int times = 1, int after = 0);
/// Lets a call of this name do its work, output parameters included, and return `result` all the
/// same, after `after` other calls. For calls that return an int.
void FailAfterwards(const std::string& name, int result = -1, int after = 0);
void ClearFaults();
/// The number of calls of this name that failed by a fault.
std::size_t FailureCount(const std::string& name);

/// The number of open handles of a kind: "app_control", "app_info",
/// "app_context", "package_info", "package_manager", "bundle", "TCService", "TCServiceNavigation",
/// "main_loop".
std::size_t OpenHandles(const std::string& kind);

/// Restores the state at the start of a process: no keys, packages, apps, timers, calls, faults or
/// log records; real clocks; no registered callbacks.
void Reset();

}  // namespace fake
