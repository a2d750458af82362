// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/ports.h"

#include "common/desk_error.h"
#include "common/json.h"
#include "message_port.h"

namespace desk::tv {
namespace {

std::string AppOf(const Json::Value& request, const Caller& caller) {
  return caller.kind == Caller::Kind::Operator ? OptionalString(request, "from", "") : caller.appId;
}

Json::Value Result(int result) {
  Json::Value answer(Json::objectValue);
  answer["result"] = result;
  return answer;
}

}  // namespace

Ports::Ports(Router& router) : m_router(router) {
  router.Add("port.register", [this](const Json::Value& request, const Caller& caller) {
    return Register(request, caller);
  });
  router.Add("port.send", [this](const Json::Value& request, const Caller& caller) {
    return Send(request, caller);
  });
  router.Add("port.list", [this](const Json::Value&, const Caller&) {
    Json::Value answer(Json::objectValue);
    answer["ports"] = Dump();
    return answer;
  });
  router.OnConnectionGone([this](const std::string& busName) { OnGone(busName); });
}

Json::Value Ports::Dump() const {
  Json::Value list(Json::arrayValue);
  for (const auto& [name, port] : m_ports) {
    Json::Value& item = list.append(Json::objectValue);
    item["app"] = name.first;
    item["port"] = name.second;
    item["id"] = port.id;
  }
  return list;
}

// The latest connection of an app has the port: an earlier one may be about to go.
Json::Value Ports::Register(const Json::Value& request, const Caller& caller) {
  const std::string name = RequireString(request, "port");
  if (name.empty()) {
    throw DeskError(DeskError::Usage, "a port needs a name");
  }
  Port& port = m_ports[{AppOf(request, caller), name}];
  if (port.busName != caller.busName) {
    port.busName = caller.busName;
    port.id = ++m_lastId;
  }
  Json::Value answer(Json::objectValue);
  answer["id"] = port.id;
  return answer;
}

Json::Value Ports::Send(const Json::Value& request, const Caller& caller) {
  const std::string app = RequireString(request, "app");
  const std::string name = RequireString(request, "port");
  if (!request["bundle"].isArray()) {
    return Result(MESSAGE_PORT_ERROR_INVALID_PARAMETER);
  }
  const auto found = m_ports.find({app, name});
  if (found == m_ports.end()) {
    return Result(MESSAGE_PORT_ERROR_PORT_NOT_FOUND);
  }
  Json::Value body(Json::objectValue);
  body["port"] = name;
  body["id"] = found->second.id;
  body["sender"] = AppOf(request, caller);
  if (request["reply_port"].isString()) {
    body["reply_port"] = request["reply_port"];
  }
  body["bundle"] = request["bundle"];
  m_router.EmitTo(found->second.busName, "port", body);
  return Result(MESSAGE_PORT_ERROR_NONE);
}

void Ports::OnGone(const std::string& busName) {
  for (auto port = m_ports.begin(); port != m_ports.end();) {
    port = port->second.busName == busName ? m_ports.erase(port) : std::next(port);
  }
}

}  // namespace desk::tv
