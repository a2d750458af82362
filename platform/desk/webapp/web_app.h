// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

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

  /// Walks init, load, and preload or resume. Throws DeskError.
  void Start(bool background);
  /// Asked to end: destroy, quit.
  void End();

 private:
  void OnEvent(const Json::Value& event);
  void Enter(const std::string& word);

  BusClient& m_bus;
  const std::string m_id;
  const std::function<void()> m_quit;
};

}  // namespace desk
