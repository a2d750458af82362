// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "desk/tv/router.h"

namespace desk::tv {

/// A message port, as a sender names it.
struct PortName {
  std::string app;
  std::string port;

  bool operator<(const PortName& other) const {
    return std::tie(app, port) < std::tie(other.app, other.port);
  }
};

struct PortMessage {
  PortName receiver;
  std::string sender;                    ///< an app id; empty for an operator who named none
  std::optional<std::string> replyPort;  ///< of the sender
  Json::Value bundle;                    ///< passed on as it is; null when it is not a bundle
};

/// Message ports: port.* and the topic "port". Main loop only.
///
/// A port belongs to the connection that registered it, and is removed when that connection ends.
/// It is found by its name and by the app of its connection. The sender of a message is the app of
/// the sending connection. Operators have no app of their own: they may register and send in the
/// name of any app.
class Ports {
 public:
  explicit Ports(Router& router);

  /// As `ports` in the reply of port.list.
  Json::Value Dump() const;

 private:
  struct Port {
    int id = 0;
    std::string busName;
  };

  int Register(const PortName& name, const std::string& busName);
  int Send(const PortMessage& message);
  void OnConnectionGone(const std::string& busName);

  Router& m_router;
  std::map<PortName, Port> m_ports;
  int m_lastId = 0;
};

}  // namespace desk::tv
