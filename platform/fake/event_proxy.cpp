// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCEMSProxy.h>

#include <algorithm>
#include <mutex>

#include "fake/control/tv.h"
#include "fake/platform_call.h"
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
  static auto* state = new State;
  return *state;
}

class Connection : public FIIPCConnection {};

class Proxy : public FCEMSProxy {
 public:
  bool Subscribe(int signalType) override {
    PlatformCall call("FCEMSProxy::Subscribe", signalType);
    return call.Run(false, [signalType] {
      State& state = GetState();
      const std::lock_guard<std::mutex> lock(state.mutex);
      state.subscriptions.push_back(signalType);
      return true;
    });
  }
};

FCEMSSignalCallback CallbackFor(int signal) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto& asked = state.subscriptions;
  const bool isAsked = std::find(asked.begin(), asked.end(), signal) != asked.end();
  return isAsked ? state.callback : nullptr;
}

}  // namespace

bool FireProxySignal(int signal) {
  const FCEMSSignalCallback callback = CallbackFor(signal);
  if (callback != nullptr) {
    callback(signal, nullptr);
  }
  return callback != nullptr;
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
  static auto* connection = new fake::Connection;
  fake::PlatformCall call("FIIPCConnection::GetInstance");
  return call.Run<FIIPCConnection*>(nullptr, [] { return connection; });
}

FCEMSProxy* FCEMSProxy::GetInstance(FIIPCConnection* pConnection, FCEMSSignalCallback pCallback) {
  static auto* proxy = new fake::Proxy;
  fake::PlatformCall call("FCEMSProxy::GetInstance", pConnection, pCallback);
  return call.Run<FCEMSProxy*>(nullptr, [&]() -> FCEMSProxy* {
    if (pConnection == nullptr) {
      return nullptr;
    }
    fake::State& state = fake::GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.callback = pCallback;
    return proxy;
  });
}
