// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/client/connection.h"

#include <dlog.h>
#include <unistd.h>

#include "desk/client/environment.h"
#include "desk/common/desk_error.h"

namespace desk::client {
namespace {

void LogError(const char* what, const char* why) {
  __dlog_print(LOG_ID_MAIN, DLOG_ERROR, "desk-client", "%s: %s", what, why);
}

void OnClosed() {
  if (Environment::Get().role != Environment::Role::Daemon) {
    return;
  }
  LogError("the TV is gone", "the daemon ends");
  // Not exit(): the tasks are still running, so no destructor may run.
  _exit(1);
}

}  // namespace

Json::Value Request(std::initializer_list<std::pair<const char*, Json::Value>> members) {
  Json::Value request(Json::objectValue);
  for (const auto& member : members) {
    request[member.first] = member.second;
  }
  return request;
}

Connection& Connection::Get() {
  // Never destroyed: threads may still call while the process ends.
  static Connection* const connection = new Connection;
  return *connection;
}

Json::Value Connection::Call(const std::string& method, const Json::Value& request) {
  return Client().Call(method, request);
}

void Connection::Tell(const std::string& method, const Json::Value& request) {
  Client().Tell(method, request);
}

void Connection::Subscribe(const std::string& topic, BusClient::EventFunction function,
                           GMainContext* context) {
  Client().Subscribe(
      topic,
      [topic, function = std::move(function)](const Json::Value& body) {
        try {
          function(body);
        } catch (const std::exception& e) {
          LogError(("event " + topic).c_str(), e.what());
        }
      },
      context);
}

void Connection::Require() {
  Client();
}

BusClient& Connection::Client() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_client == nullptr) {
    const std::string& address = Environment::Get().busAddress;
    if (address.empty()) {
      throw DeskError(DeskError::NO_TV, "no TV: TV_BUS is not set; start this program from a desk");
    }
    m_client = std::make_unique<BusClient>(address);
    m_client->OnClosed(OnClosed);
  }
  return *m_client;
}

}  // namespace desk::client
