// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <deque>
#include <functional>
#include <string>

#include "common/bus_client.h"

namespace desk {

/// The states of one web app, from its start to its end. Each is told to desk-tv before anything
/// else happens. Main thread only.
class WebApp {
 public:
  /// quit ends the process's main loop. The bus must live longer.
  WebApp(BusClient& bus, std::string id, std::function<void()> quit);
  ~WebApp();
  WebApp(const WebApp&) = delete;
  WebApp& operator=(const WebApp&) = delete;

  /// Walks init, load, and preload or resume, in the main loop: loading takes its time, so that
  /// whoever launched the app can subscribe to its words before the first one.
  void Start(bool background);
  /// Asked to end: destroy, quit.
  void End();

 private:
  void OnEvent(const Json::Value& event);
  void OnLoaded();
  void LoadOn();
  void StopLoading();
  void Obey(const std::string& word);
  void Enter(const std::string& word);

  BusClient& m_bus;
  const std::string m_id;
  const std::function<void()> m_quit;
  std::deque<std::string> m_loading;  ///< words of the start that are still to come
  std::deque<std::string> m_orders;   ///< those that came meanwhile
  unsigned m_timer = 0;
};

}  // namespace desk
