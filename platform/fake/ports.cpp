// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/ports.h"

#include <message_port.h>

#include <algorithm>
#include <mutex>
#include <set>

#include "fake/bundles.h"
#include "fake/platform_call.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct LocalPort {
  std::string name;
  message_port_message_cb callback = nullptr;
  void* data = nullptr;
};

struct State {
  std::mutex mutex;
  // Guarded by mutex.
  std::vector<LocalPort> local;  // the id is the index + 1
  std::set<std::pair<std::string, std::string>> remote;
  std::vector<Outgoing> sent;
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

int Register(const LocalPort& port) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto found = std::find_if(state.local.begin(), state.local.end(),
                                  [&](const LocalPort& old) { return old.name == port.name; });
  if (found != state.local.end()) {
    *found = port;
    return static_cast<int>(found - state.local.begin()) + 1;
  }
  state.local.push_back(port);
  return static_cast<int>(state.local.size());
}

std::pair<int, LocalPort> FindLocal(const std::string& name) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  for (std::size_t i = 0; i < state.local.size(); ++i) {
    if (state.local[i].name == name) {
      return {static_cast<int>(i) + 1, state.local[i]};
    }
  }
  return {0, {}};
}

int ResultOf(const char* app, const char* port, const bundle* message) {
  if (app == nullptr || port == nullptr || message == nullptr) {
    return MESSAGE_PORT_ERROR_INVALID_PARAMETER;
  }
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.remote.count({app, port}) != 0 ? MESSAGE_PORT_ERROR_NONE
                                              : MESSAGE_PORT_ERROR_PORT_NOT_FOUND;
}

std::string NameOrNull(const char* name) {
  return name == nullptr ? "null" : name;
}

int Send(PlatformCall& call, const char* app, const char* port, bundle* message, int localPort) {
  const int result = call.Run(FAILURE, [&] { return ResultOf(app, port, message); });
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.sent.push_back({NameOrNull(app), NameOrNull(port), Entries(message), localPort, result});
  return result;
}

}  // namespace

bool SendMessage(const Incoming& incoming) {
  const auto [id, port] = FindLocal(incoming.port);
  if (id == 0) {
    return false;
  }
  if (incoming.app != nullptr && incoming.replyPort != nullptr) {
    AddRemotePort(incoming.app, incoming.replyPort);
  }
  bundle* message = NewPlatformBundle(incoming.message);
  port.callback(id, incoming.app, incoming.replyPort, incoming.trusted, message, port.data);
  FreePlatformBundle(message);
  return true;
}

std::vector<Outgoing> SentMessages() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.sent;
}

void ClearSentMessages() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.sent.clear();
}

void AddRemotePort(const std::string& app, const std::string& port) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.remote.insert({app, port});
}

std::vector<std::string> LocalPorts() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  std::vector<std::string> names;
  for (const LocalPort& port : state.local) {
    names.push_back(port.name);
  }
  return names;
}

void ResetPorts() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.local.clear();
  state.remote.clear();
  state.sent.clear();
}

}  // namespace fake

using fake::FAILURE;
using fake::PlatformCall;

int message_port_register_local_port(const char* local_port, message_port_message_cb callback,
                                     void* user_data) {
  PlatformCall call("message_port_register_local_port", local_port, callback, user_data);
  return call.Run(FAILURE, [&]() -> int {
    if (local_port == nullptr || callback == nullptr) {
      return MESSAGE_PORT_ERROR_INVALID_PARAMETER;
    }
    return fake::Register({local_port, callback, user_data});
  });
}

int message_port_send_message(const char* remote_app_id, const char* remote_port, bundle* message) {
  PlatformCall call("message_port_send_message", remote_app_id, remote_port,
                    fake::DescribeBundle(message));
  return fake::Send(call, remote_app_id, remote_port, message, 0);
}

int message_port_send_message_with_local_port(const char* remote_app_id, const char* remote_port,
                                              bundle* message, int local_port_id) {
  PlatformCall call("message_port_send_message_with_local_port", remote_app_id, remote_port,
                    fake::DescribeBundle(message), local_port_id);
  return fake::Send(call, remote_app_id, remote_port, message, local_port_id);
}
