// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <initializer_list>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "desk/common/bus_client.h"

namespace desk::client {

/// A request with these members.
Json::Value Request(std::initializer_list<std::pair<const char*, Json::Value>> members);

/// The process's connection to desk-tv, at the address in TV_BUS. Connects at the first use, and at
/// the next use after a failure. All operations are callable from any thread and throw DeskError
/// (NoTv) without a TV.
///
/// When the bus closes the connection, the main loop of the daemon's process ends the process:
/// desk-tv, which supervises the daemon, has ended and could no longer stop it. In any other
/// process all later calls fail.
class Connection {
 public:
  static Connection& Get();

  Json::Value Call(const std::string& method, const Json::Value& request);
  /// As BusClient::Tell.
  void Tell(const std::string& method, const Json::Value& request);
  /// As BusClient::Subscribe; exceptions of the function are logged.
  void Subscribe(const std::string& topic, BusClient::EventFunction function,
                 GMainContext* context);
  /// Throws without a TV. For calls that send no request but must fail then.
  void Require();

 private:
  BusClient& Client();

  std::mutex m_mutex;  // guards the following members
  std::unique_ptr<BusClient> m_client;
};

}  // namespace desk::client
