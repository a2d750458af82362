// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/client/signals.h"

#include <FCEMSProxy.h>
#include <TVServiceAPI.h>
#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "desk/client/call.h"
#include "desk/client/connection.h"
#include "desk/client/main_loop.h"
#include "framework/tv_service_fields.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::SignalSet;
using desk::client::SignalThread;

namespace desk::client {

SignalThread& SignalThread::Get() {
  // Never destroyed: its thread runs until the process ends.
  static SignalThread* const thread = new SignalThread;
  return *thread;
}

SignalThread::SignalThread() : m_context(g_main_context_new()) {
  std::thread([context = m_context] {
    pthread_setname_np(pthread_self(), "desk-signals");
    MainLoop::Get().WaitForFirstRun();
    g_main_loop_run(g_main_loop_new(context, FALSE));
  }).detach();
}

void SignalThread::Subscribe(const char* topic,
                             std::function<void(const Json::Value& body)> function) {
  Connection::Get().Subscribe(topic, std::move(function), m_context);
}

void SignalSet::Add(int signal) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_signals.insert(signal);
}

bool SignalSet::Contains(int signal) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_signals.count(signal) != 0;
}

}  // namespace desk::client

namespace {

// The bytes of the payload, padded with zeros to the shortest payload.
std::vector<std::uint8_t> Payload(const std::string& hex) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(hex.substr(i, 2), nullptr, 16)));
  }
  bytes.resize(std::max(bytes.size(), framework::SHORTEST_PAYLOAD));
  return bytes;
}

class Subscriber final : public TCSignalSubscriber {
 public:
  explicit Subscriber(TVSSignalCallback callback) : m_callback(callback) {}

  int Subscribe(int signalType, int first, int second, int third, int fourth) override {
    Call call("TCSignalSubscriber::Subscribe", signalType, first, second, third, fourth);
    return call.Run(-1, [&] {
      m_signals.Add(signalType);
      return 0;
    });
  }

  // On the thread of the signals.
  void OnEvent(const Json::Value& body) const {
    const int signal = body["signal"].asInt();
    if (m_signals.Contains(signal)) {
      m_callback(signal, Payload(body["data"].asString()).data(), nullptr);
    }
  }

 private:
  const TVSSignalCallback m_callback;
  SignalSet m_signals;
};

class ProxyConnection final : public FIIPCConnection {};

class Proxy final : public FCEMSProxy {
 public:
  static Proxy& Get() {
    static Proxy* const proxy = new Proxy;
    return *proxy;
  }

  void SetCallback(FCEMSSignalCallback callback) {
    std::call_once(m_subscribed, [this] {
      SignalThread::Get().Subscribe("ems", [this](const Json::Value& body) { OnEvent(body); });
    });
    m_callback.store(callback);
  }

  bool Subscribe(int signalType) override {
    Call call("FCEMSProxy::Subscribe", signalType);
    return call.Run(false, [&] {
      m_signals.Add(signalType);
      return true;
    });
  }

 private:
  // On the thread of the signals.
  void OnEvent(const Json::Value& body) const {
    const int signal = body["signal"].asInt();
    const FCEMSSignalCallback callback = m_callback.load();
    if (callback != nullptr && m_signals.Contains(signal)) {
      callback(signal, nullptr);
    }
  }

  std::once_flag m_subscribed;
  std::atomic<FCEMSSignalCallback> m_callback{nullptr};
  SignalSet m_signals;
};

}  // namespace

int TVServiceAPI::CreateSignalSubscriber(TVSSignalCallback pCallback,
                                         TCSignalSubscriber** ppSubscriber) {
  Call call("TVServiceAPI::CreateSignalSubscriber", pCallback);
  if (ppSubscriber == nullptr) {
    return call.Return(-1);
  }
  *ppSubscriber = nullptr;
  return call.Run(-1, [&] {
    if (pCallback == nullptr) {
      return -1;
    }
    auto subscriber = std::make_shared<Subscriber>(pCallback);
    SignalThread::Get().Subscribe(
        "tvs", [subscriber](const Json::Value& body) { subscriber->OnEvent(body); });
    *ppSubscriber = subscriber.get();  // owned by the subscription, which never ends
    return 0;
  });
}

FIIPCConnection* FIIPCConnection::GetInstance() {
  Call call("FIIPCConnection::GetInstance");
  return call.Run<FIIPCConnection*>(nullptr, []() -> FIIPCConnection* {
    Connection::Get().Require();
    static ProxyConnection* const connection = new ProxyConnection;  // as long as the process
    return connection;
  });
}

FCEMSProxy* FCEMSProxy::GetInstance(FIIPCConnection* pConnection, FCEMSSignalCallback pCallback) {
  Call call("FCEMSProxy::GetInstance", pConnection, pCallback);
  return call.Run<FCEMSProxy*>(nullptr, [&]() -> FCEMSProxy* {
    if (pConnection == nullptr) {
      return nullptr;
    }
    Proxy::Get().SetCallback(pCallback);
    return &Proxy::Get();
  });
}
