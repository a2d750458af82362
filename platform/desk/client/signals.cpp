// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "client/signals.h"

#include <FCEMSProxy.h>
#include <TVServiceAPI.h>
#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "client/call.h"
#include "client/connection.h"
#include "client/main_loop.h"

using desk::Call;
using desk::Connection;
using desk::SignalSet;
using desk::SignalThread;

namespace desk {

SignalThread& SignalThread::Get() {
  // Never destroyed: its thread runs until the process is gone.
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

}  // namespace desk

namespace {

constexpr std::size_t LEAST_PAYLOAD = 8;

// The bytes of the payload, zero-padded to what a receiver may read without asking.
std::vector<std::uint8_t> Payload(const std::string& hex) {
  std::vector<std::uint8_t> bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(hex.substr(i, 2), nullptr, 16)));
  }
  bytes.resize(std::max(bytes.size(), LEAST_PAYLOAD));
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

  // On the signals' thread.
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
  // On the signals' thread.
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
    return call.Finish(-1);
  }
  *ppSubscriber = nullptr;
  return call.Run(-1, [&] {
    if (pCallback == nullptr) {
      return -1;
    }
    auto subscriber = std::make_shared<Subscriber>(pCallback);
    SignalThread::Get().Subscribe(
        "tvs", [subscriber](const Json::Value& body) { subscriber->OnEvent(body); });
    *ppSubscriber = subscriber.get();  // kept by the subscription, which is never ended
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
