// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <thread>
#include <vector>

/// The platform in memory. It holds state and records what it was asked; what should have been
/// asked is for the test to say. Everything here is callable from any thread.
namespace fake {

/// One call through the wall, named as in the platform's header: "vconf_set_str",
/// "FCOrvAppInfoAPI::CreateAppInfo", "FCTask::Send". Also "kill", "sync", "malloc_trim",
/// "g_timeout_add", "g_timeout_add_seconds", "g_source_remove" and "g_main_loop_new", "_run",
/// "_unref". Log records, the clock and the waits are not in the list.
struct Call {
  unsigned long seq = 0;  ///< place in the order of calls and log records alike
  std::string name;
  /// Texts as they are, null as "null", numbers in decimal, flags as "true" and "false". A handle
  /// is its kind and number ("app_control#1"); a function or user data is "set" or "null".
  /// Parameters that only take a result are left out.
  std::vector<std::string> args;
  /// What the call returned, in the same form; "void" for nothing. Empty while the call runs.
  std::string result;
  std::string thread;  ///< name of the thread, as the kernel knows it
  std::thread::id threadID;
};

/// All calls so far, in the order in which they began; those of static initialisers, before main,
/// too.
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
/// Recording can be off where a test makes millions of calls. Faults work all the same.
void SetRecording(bool enabled);

constexpr int kForever = -1;

/// Lets the call fail `times` times, after it went well `after` times. The call does nothing, gives
/// `result` and leaves its out-parameters untouched (a result of 0 too: handles that a success
/// would set are null then). Calls that return a pointer give null, those that return a bool give
/// result > 0. Faults of one name add up, the oldest first.
void Fail(const std::string& name, int result = -1, int times = 1, int after = 0);
void ClearFaults();
/// How many failures were handed out for the name.
std::size_t FailureCount(const std::string& name);

/// Handles of a kind that are created and not destroyed yet: "app_control", "app_info",
/// "app_context", "package_info", "package_manager", "bundle", "TCService", "TCServiceNavigation",
/// "main_loop".
std::size_t OpenHandles(const std::string& kind);

/// Puts everything back to how it is at the start of a process: no keys, packages, apps, timers,
/// calls, faults, log records; real clocks. Callbacks that the daemon registered are forgotten.
void Reset();

}  // namespace fake
