// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <initializer_list>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "common/bus_client.h"

namespace desk {

/// A request's members.
Json::Value Request(std::initializer_list<std::pair<const char*, Json::Value>> members);

/// The process's one way to desk-tv, at the address in TV_BUS. Connects when it is first used, and
/// again at the next use when that failed. All operations are callable from any thread and throw
/// DeskError (NoTv) without a TV.
///
/// When the bus closes the connection the daemon's process ends itself, once its main loop gets to
/// it: desk-tv, which starts and restarts the daemon, is gone then, and nothing would end a daemon
/// that runs on. In any other process calls fail from then on.
class Connection {
 public:
  static Connection& Get();

  Json::Value Call(const std::string& method, const Json::Value& request);
  /// As BusClient::Tell.
  void Tell(const std::string& method, const Json::Value& request);
  /// As BusClient::Subscribe; what the function throws is logged.
  void Subscribe(const std::string& topic, BusClient::EventFunction function,
                 GMainContext* context);
  /// For calls that have nothing to ask but must fail without a TV.
  void Require();

 private:
  BusClient& Client();

  std::mutex m_mutex;  // guards what follows
  std::unique_ptr<BusClient> m_client;
};

}  // namespace desk
