// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <map>
#include <string>
#include <utility>

#include "tv/router.h"

namespace desk::tv {

/// Message ports: port.* and the topic "port". Main loop only.
///
/// A port belongs to the connection that registered it and goes with it; it is found by the app of
/// that connection and its name. The sender of a message is the app of the sender's connection.
/// Operators, who are no app, may say in whose name they register and send.
class Ports {
 public:
  explicit Ports(Router& router);

  /// As the reply of port.list has it in `ports`.
  Json::Value Dump() const;

 private:
  struct Port {
    int id = 0;
    std::string busName;
  };

  Json::Value Register(const Json::Value& request, const Caller& caller);
  Json::Value Send(const Json::Value& request, const Caller& caller);
  void OnGone(const std::string& busName);

  Router& m_router;
  std::map<std::pair<std::string, std::string>, Port> m_ports;  ///< by app and name
  int m_lastId = 0;
};

}  // namespace desk::tv
