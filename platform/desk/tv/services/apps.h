// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>
#include <sys/types.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/tv/services/app_registry.h"
#include "desk/tv/services/needs.h"
#include "desk/tv/services/state_requests.h"

namespace desk::tv {

struct LaunchRequest {
  std::string app;
  std::string operation;                     ///< the default operation when the launch named none
  std::map<std::string, std::string> extra;  ///< extra data: key to value

  /// Whether the extra data asks for a launch that stays in the background.
  bool IsBackground() const;
};

struct LaunchResult {
  int result = 0;            ///< a code of app_control.h
  std::optional<pid_t> pid;  ///< empty when no process runs
};

/// One app, and its process if it has one.
struct AppStatus {
  KnownApp app;
  std::optional<pid_t> pid;
  std::optional<WebAppState> state;  ///< of a web app that runs: the last that it reported
};

/// The processes of apps: app.* and the topic "app". Main loop only.
///
/// Each app has at most one process, which leads a session of its own; the whole session is killed
/// when the app ends. A UI application is run by desk-webapp, which reports each state of the web
/// app with app.entered; the state is also written to the settings key of the app. When that
/// process is killed, the state becomes "destroy", as the platform's web runtime does for an app
/// that the system ends.
///
/// The environment of a process holds the operation and the extra data of the launch that started
/// it. Later launches do not change it.
class Apps {
 public:
  Apps(const Needs& needs, const Catalogue& catalogue, TvStore& store);
  /// Kills all processes. Sends no events.
  ~Apps();
  Apps(const Apps&) = delete;
  Apps& operator=(const Apps&) = delete;

  std::optional<AppStatus> Find(const std::string& id) const;
  std::vector<AppStatus> List() const;
  /// Starts the app. An app that runs already comes to the front instead, unless the launch asks
  /// for the background. Logs why a process could not be started.
  LaunchResult Launch(const LaunchRequest& request);

  /// Kills the processes of a package that is about to change. On return they have ended and the
  /// events have been sent.
  void EndPackage(const std::string& package);
  /// Power-off: kills all processes. Sends no events.
  void EndAll();

  /// As `apps` in the reply of app.list.
  Json::Value Dump() const;

 private:
  struct Process {
    pid_t pid = 0;
    std::optional<WebAppState> state;  ///< of a web app: the last that it reported
    bool ending = false;               ///< killed, or a web app that has quit: still to be reaped
    StateRequests requests;            ///< to a web app
  };

  void AddMethods(Router& router);
  void AddStateMethods(Router& router);
  AppStatus StatusOf(KnownApp app) const;
  pid_t Start(const KnownApp& app, const LaunchRequest& request);
  int Signal(const std::string& id, int number);
  void RequestState(const std::string& id, WebAppState state, StateRequests::Done done);
  StateRequests::Send SenderTo(const std::string& id, pid_t pid);
  void OnEntered(std::optional<WebAppState> state, const Caller& caller);
  void OnExit(const std::string& id, pid_t pid, int status);
  void EndNow(const std::string& id, pid_t pid);
  void SendEvent(const std::string& id, pid_t pid, const char* event, const std::string& word);

  const Needs m_needs;
  AppRegistry m_registry;
  std::map<std::string, Process> m_processes;
  /// Destroyed first. The watches of processes hold a weak pointer to it: they may fire later.
  std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};

}  // namespace desk::tv
