// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// Launches, running apps and app operations.
namespace fake {

struct Launch {
  std::string app;
  std::string operation;
  std::vector<std::pair<std::string, std::string>> extra;  ///< in the order of adding
  int result = 0;
};

/// Every launch request, refused ones included, in order.
std::vector<Launch> Launches();
void ClearLaunches();
/// The results of the next launch requests, one each; afterwards 0 again. An accepted launch does
/// not make the app run: SetRunning() or the hook does.
void QueueLaunchResults(const std::vector<int>& results);
/// Runs within every launch request, on the daemon's thread, before it returns; its value is the
/// result unless one is queued. An empty function removes it.
void SetLaunchHook(std::function<int(const Launch&)> hook);

/// The app runs with this pid. The platform knows the app from then on, even without a package.
void SetRunning(const std::string& app, pid_t pid);
void SetStopped(const std::string& app);
bool IsRunning(const std::string& app);
/// Whether app_context_get_pid() returns the pid of a destroyed context, as it does by default.
/// With false it returns an error, and *pid is untouched.
void SetDestroyedContextsAnswer(bool answer);

struct Kill {
  pid_t pid = 0;
  int signal = 0;
  int result = 0;
};

/// Every kill() of the daemon. No signal is ever sent. A running app with the pid ends with signal
/// 9 and the result is 0; any other pid gives -1 and ESRCH.
std::vector<Kill> Kills();

/// The app that serves an operation; an empty text for none. No value restores the platform's own
/// app.
void SetOperationApp(const std::string& operation, const std::optional<std::string>& app);
/// The platform's own app, which a reset restores. None unless set.
void SetPlatformOperationApp(const std::string& operation, const std::string& app);
/// No value when no app serves the operation.
std::optional<std::string> OperationApp(const std::string& operation);
/// Runs within every app_operation_set_current_app(), on the daemon's thread, before the change. An
/// empty function removes it.
void SetOperationHook(
    std::function<void(const std::string& operation, const std::string& app)> hook);

}  // namespace fake
