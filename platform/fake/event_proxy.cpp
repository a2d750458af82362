// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCEMSProxy.h>

#include <algorithm>
#include <mutex>

#include "fake/control/tv.h"
#include "fake/recorder.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct State {
  std::mutex mutex;
  // Guarded by mutex.
  FCEMSSignalCallback callback = nullptr;
  std::vector<int> subscriptions;
};

State& GetState() {
  static auto* s_state = new State;
  return *s_state;
}

class Connection : public FIIPCConnection {};

class Proxy : public FCEMSProxy {
 public:
  bool Subscribe(int signalType) override {
    Recorder call("FCEMSProxy::Subscribe", signalType);
    if (call.Fails()) {
      return call.ReturnBoolFault();
    }
    State& state = GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.subscriptions.push_back(signalType);
    return call.Return(true);
  }
};

FCEMSSignalCallback CallbackFor(int signal, bool all) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto& asked = state.subscriptions;
  const bool wanted = all || std::find(asked.begin(), asked.end(), signal) != asked.end();
  return wanted ? state.callback : nullptr;
}

bool Fire(int signal, bool all) {
  const FCEMSSignalCallback callback = CallbackFor(signal, all);
  if (callback != nullptr) {
    callback(signal, nullptr);
  }
  return callback != nullptr;
}

}  // namespace

bool FireProxySignal(int signal) {
  return Fire(signal, false);
}

bool FireProxySignalToAll(int signal) {
  return Fire(signal, true);
}

std::vector<int> ProxySubscriptions() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.subscriptions;
}

void ResetProxy() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.callback = nullptr;
  state.subscriptions.clear();
}

}  // namespace fake

FIIPCConnection* FIIPCConnection::GetInstance() {
  static auto* s_connection = new fake::Connection;
  fake::Recorder call("FIIPCConnection::GetInstance");
  if (call.Fails()) {
    return call.ReturnAs<FIIPCConnection*>(nullptr, "null");
  }
  return call.ReturnAs<FIIPCConnection*>(s_connection, "FIIPCConnection");
}

FCEMSProxy* FCEMSProxy::GetInstance(FIIPCConnection* pConnection, FCEMSSignalCallback pCallback) {
  static auto* s_proxy = new fake::Proxy;
  fake::Recorder call("FCEMSProxy::GetInstance", fake::Presence(pConnection),
                      fake::Presence(pCallback));
  if (call.Fails() || pConnection == nullptr) {
    return call.ReturnAs<FCEMSProxy*>(nullptr, "null");
  }
  fake::State& state = fake::GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.callback = pCallback;
  return call.ReturnAs<FCEMSProxy*>(s_proxy, "FCEMSProxy");
}
