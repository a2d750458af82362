// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>
#include <sys/types.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "common/paths.h"
#include "tv/callers.h"
#include "tv/router.h"
#include "tv/services/app_registry.h"
#include "tv/services/web_app_requests.h"

namespace desk::tv {

/// What the launcher needs of the rest of the television. Everything lives longer than it.
struct AppNeeds {
  CallerTable& callers;
  std::string busAddress;  ///< for the environment of the apps
  std::string tools;       ///< directory of tv and desk-webapp
  std::function<void(const std::string& key, const std::string& value)> setKey;
  std::function<void(const std::string& line)> log;
};

/// The processes of apps: app.* and the topic "app". Main loop only.
///
/// One process for each app, in a session of its own. What an app has started ends with it. A UI
/// application is run by desk-webapp, which says with app.entered what state it is in; the word
/// goes to the settings key of its status. When such a process is killed, the word is "destroy", as
/// the web runtime has it for an app that the system took away.
///
/// A process finds the operation and the extra data of the launch that started it in its
/// environment; later launches do not change them.
class Apps {
 public:
  Apps(Router& router, const DeskPaths& paths, const Catalogue& catalogue, TvStore& store,
       AppNeeds needs);
  /// Kills what runs, and tells nobody.
  ~Apps();
  Apps(const Apps&) = delete;
  Apps& operator=(const Apps&) = delete;

  /// Kills the processes of a package that changes or goes. When it returns they have ended, and
  /// that has been told.
  void EndPackage(const std::string& package);
  /// Power-off: kills all processes, and tells nobody.
  void EndAll();

  /// As the reply of app.list has it in `apps`.
  Json::Value Dump() const;

 private:
  struct Running {
    pid_t pid = 0;
    std::string word;     ///< of a web app, the last that it entered
    bool ending = false;  ///< killed, or a web app that has quit: only its process is left
    WebAppOrders orders;  ///< of a web app, what it was told and has not done yet
  };

  void AddMethods(Router& router);
  Json::Value Info(const std::string& id) const;
  Json::Value Launch(const Json::Value& request);
  pid_t Start(const KnownApp& app, const Json::Value& request);
  int Signal(const std::string& id, int number);
  void Enter(const Json::Value& request, std::shared_ptr<Reply> reply);
  WebAppOrders::Send OrderTo(const std::string& id, pid_t pid);
  Json::Value OnEntered(const Json::Value& request, const Caller& caller);
  void OnExit(const std::string& id, pid_t pid, int status);
  void EndNow(const std::string& id, pid_t pid);
  void Tell(const std::string& id, pid_t pid, const char* state, const std::string& word);

  Router& m_router;
  const DeskPaths m_paths;
  const AppNeeds m_needs;
  AppRegistry m_registry;
  std::map<std::string, Running> m_running;
  /// Ends before everything else: watches of processes look whether it is still there.
  std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};

}  // namespace desk::tv
