// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <deque>
#include <functional>
#include <string>

#include "desk/common/bus_client.h"
#include "desk/common/timer.h"

namespace desk {

/// The states of one web app, from its start to its end. Each state is reported to desk-tv before
/// anything else happens. Main thread only.
class WebApp {
 public:
  /// `quit` ends the main loop of the process. The bus must outlive this object.
  WebApp(BusClient& bus, std::string id, std::function<void()> quit);
  WebApp(const WebApp&) = delete;
  WebApp& operator=(const WebApp&) = delete;

  /// Enters init, load, and preload or resume, each after a pause, so that whoever launched the app
  /// can subscribe to its states before the first one.
  void Start(bool background);
  /// Enters destroy and quit at once.
  void End();

 private:
  void OnEvent(const Json::Value& event);
  void ScheduleNextState();
  void EnterNextState();
  void StopLoading();
  void Obey(const std::string& state);
  void Enter(const std::string& state);

  BusClient& m_bus;
  const std::string m_id;
  const std::function<void()> m_quit;
  std::deque<std::string> m_loading;    ///< states of the start that are still to come
  std::deque<std::string> m_requested;  ///< requests that wait for the end of the start
  Timer m_timer;
};

}  // namespace desk
