// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <message_port.h>

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "desk/client/bundle_data.h"
#include "desk/client/call.h"
#include "desk/client/connection.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;

namespace {

struct Port {
  int id = 0;  // 0 until the reply of desk-tv
  message_port_message_cb callback = nullptr;
  void* userData = nullptr;
};

// The process's local ports. Callable from any thread.
class Ports {
 public:
  static Ports& Get() {
    static Ports* const ports = new Ports;
    return *ports;
  }

  // Entered before the request: a message may reach the main loop before the reply.
  int Register(const std::string& name, message_port_message_cb callback, void* userData) {
    std::call_once(m_subscribed, [this] {
      Connection::Get().Subscribe(
          "port", [this](const Json::Value& body) { OnMessage(body); }, nullptr);
    });
    const int known = Enter(name, callback, userData);
    if (known != 0) {
      return known;
    }
    try {
      const int id =
          Connection::Get().Call("port.register", Request({{"port", name}}))["id"].asInt();
      SetId(name, id);
      return id;
    } catch (const std::exception&) {
      SetId(name, 0);
      throw;
    }
  }

  std::optional<std::string> NameOf(int id) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& entry : m_ports) {
      if (entry.second.id == id && id != 0) {
        return entry.first;
      }
    }
    return std::nullopt;
  }

 private:
  int Enter(const std::string& name, message_port_message_cb callback, void* userData) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    Port& port = m_ports[name];
    port.callback = callback;
    port.userData = userData;
    return port.id;
  }

  // A negative id is the error of a refusal.
  void SetId(const std::string& name, int id) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (id > 0) {
      m_ports[name].id = id;
    } else {
      m_ports.erase(name);
    }
  }

  // On the main loop.
  void OnMessage(const Json::Value& body) {
    Port port;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      const auto found = m_ports.find(body["port"].asString());
      if (found == m_ports.end()) {
        return;
      }
      port = found->second;
    }
    bundle message = desk::client::ReadBundle(body["bundle"]);
    const char* replyPort = body["reply_port"].isNull() ? nullptr : body["reply_port"].asCString();
    port.callback(body["id"].asInt(), body["sender"].asCString(), replyPort, false, &message,
                  port.userData);
  }

  std::once_flag m_subscribed;
  mutable std::mutex m_mutex;  // guards the following members
  std::map<std::string, Port> m_ports;
};

int Send(const char* app, const char* port, const bundle* message, const char* replyPort) {
  Json::Value request = Request({{"app", app}, {"port", port}});
  request["bundle"] = desk::client::FormatBundle(*message);
  if (replyPort != nullptr) {
    request["reply_port"] = replyPort;
  }
  return Connection::Get().Call("port.send", request)["result"].asInt();
}

}  // namespace

int message_port_register_local_port(const char* local_port, message_port_message_cb callback,
                                     void* user_data) {
  Call call("message_port_register_local_port", local_port, callback, user_data);
  return call.Run<int>(MESSAGE_PORT_ERROR_IO_ERROR, [&]() -> int {
    if (local_port == nullptr || callback == nullptr) {
      return MESSAGE_PORT_ERROR_INVALID_PARAMETER;
    }
    return Ports::Get().Register(local_port, callback, user_data);
  });
}

int message_port_send_message(const char* remote_app_id, const char* remote_port, bundle* message) {
  Call call("message_port_send_message", remote_app_id, remote_port, message);
  return call.Run<int>(MESSAGE_PORT_ERROR_IO_ERROR, [&]() -> int {
    if (remote_app_id == nullptr || remote_port == nullptr || message == nullptr) {
      return MESSAGE_PORT_ERROR_INVALID_PARAMETER;
    }
    return Send(remote_app_id, remote_port, message, nullptr);
  });
}

int message_port_send_message_with_local_port(const char* remote_app_id, const char* remote_port,
                                              bundle* message, int local_port_id) {
  Call call("message_port_send_message_with_local_port", remote_app_id, remote_port, message,
            local_port_id);
  return call.Run<int>(MESSAGE_PORT_ERROR_IO_ERROR, [&]() -> int {
    const auto local = Ports::Get().NameOf(local_port_id);
    if (remote_app_id == nullptr || remote_port == nullptr || message == nullptr ||
        !local.has_value()) {
      return MESSAGE_PORT_ERROR_INVALID_PARAMETER;
    }
    return Send(remote_app_id, remote_port, message, local->c_str());
  });
}
