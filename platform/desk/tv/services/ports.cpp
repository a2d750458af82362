// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/ports.h"

#include "desk/common/desk_error.h"
#include "desk/common/json.h"
#include "message_port.h"

namespace desk::tv {
namespace {

std::string ReadSender(const Json::Value& request, const Caller& caller) {
  return caller.kind == Caller::Kind::Operator ? OptionalString(request, "from", "") : caller.appId;
}

PortName ReadOwnPort(const Json::Value& request, const Caller& caller) {
  const std::string port = RequireString(request, "port");
  if (port.empty()) {
    throw DeskError(DeskError::USAGE, "the name of the port is empty: give it a name");
  }
  return {ReadSender(request, caller), port};
}

PortMessage ReadMessage(const Json::Value& request, const Caller& caller) {
  PortMessage message;
  message.receiver.app = RequireString(request, "app");
  message.receiver.port = RequireString(request, "port");
  if (!request["bundle"].isArray()) {
    return message;
  }
  message.bundle = request["bundle"];
  message.sender = ReadSender(request, caller);
  if (request["reply_port"].isString()) {
    message.replyPort = request["reply_port"].asString();
  }
  return message;
}

Json::Value ToJson(const PortMessage& message, int id) {
  Json::Value body = JsonObject({{"port", message.receiver.port},
                                 {"id", id},
                                 {"sender", message.sender},
                                 {"bundle", message.bundle}});
  if (message.replyPort) {
    body["reply_port"] = *message.replyPort;
  }
  return body;
}

}  // namespace

Ports::Ports(Router& router) : m_router(router) {
  router.Add("port.register", [this](const Json::Value& request, const Caller& caller) {
    return JsonObject({{"id", Register(ReadOwnPort(request, caller), caller.busName)}});
  });
  router.Add("port.send", [this](const Json::Value& request, const Caller& caller) {
    return JsonObject({{"result", Send(ReadMessage(request, caller))}});
  });
  router.Add("port.list", [this](const Json::Value&, const Caller&) {
    return JsonObject({{"ports", Dump()}});
  });
  router.OnConnectionGone([this](const std::string& busName) { OnConnectionGone(busName); });
}

Json::Value Ports::Dump() const {
  Json::Value list(Json::arrayValue);
  for (const auto& [name, port] : m_ports) {
    list.append(JsonObject({{"app", name.app}, {"port", name.port}, {"id", port.id}}));
  }
  return list;
}

// The latest connection of an app gets the port: an earlier one may be about to end.
int Ports::Register(const PortName& name, const std::string& busName) {
  Port& port = m_ports[name];
  if (port.busName != busName) {
    port.busName = busName;
    port.id = ++m_lastId;
  }
  return port.id;
}

int Ports::Send(const PortMessage& message) {
  if (message.bundle.isNull()) {
    return MESSAGE_PORT_ERROR_INVALID_PARAMETER;
  }
  const auto found = m_ports.find(message.receiver);
  if (found == m_ports.end()) {
    return MESSAGE_PORT_ERROR_PORT_NOT_FOUND;
  }
  m_router.EmitTo(found->second.busName, "port", ToJson(message, found->second.id));
  return MESSAGE_PORT_ERROR_NONE;
}

void Ports::OnConnectionGone(const std::string& busName) {
  for (auto port = m_ports.begin(); port != m_ports.end();) {
    port = port->second.busName == busName ? m_ports.erase(port) : std::next(port);
  }
}

}  // namespace desk::tv
