// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <TVServiceAPI.h>
#include <pthread.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "fake/control/tv.h"
#include "fake/handles.h"
#include "fake/recorder.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct Subscriber;

struct State {
  std::mutex mutex;
  // Guarded by mutex.
  std::vector<Service> services;
  std::optional<Service> current;
  TSTvMode mode;
  std::vector<std::unique_ptr<Subscriber>> subscribers;
  std::vector<std::pair<const Subscriber*, TvSubscription>> subscriptions;
};

State& GetState() {
  static auto* s_state = new State;
  return *s_state;
}

struct Subscriber : public TCSignalSubscriber {
  explicit Subscriber(TVSSignalCallback function) : callback(function) {}

  int Subscribe(int signalType, int first, int second, int third, int fourth) override {
    Recorder call("TCSignalSubscriber::Subscribe", signalType, first, second, third, fourth);
    if (call.Fails()) {
      return call.ReturnFault();
    }
    State& state = GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.subscriptions.push_back({this, {signalType, {first, second, third, fourth}}});
    return call.Return(0);
  }

  const TVSSignalCallback callback;
};

void Copy(const Service& service, const TCCriteriaHelper& rCriteria, TCServiceData& rData) {
  for (const int field : rCriteria.GetFields()) {
    if (const auto number = service.numbers.find(field); number != service.numbers.end()) {
      rData.Set(field, number->second);
    }
    if (const auto text = service.texts.find(field); text != service.texts.end()) {
      rData.Set(field, text->second);
    }
  }
}

bool Matches(const Service& service, const TCCriteriaHelper& rCriteria) {
  for (const auto& [field, value] : rCriteria.GetConditions()) {
    const auto number = service.numbers.find(field);
    if (number == service.numbers.end() || number->second != value) {
      return false;
    }
  }
  return true;
}

std::string TextOf(const TCCriteriaHelper& rCriteria) {
  std::string text;
  for (const auto& [field, value] : rCriteria.GetConditions()) {
    text += (text.empty() ? "" : " ") + std::to_string(field) + "=" + std::to_string(value);
  }
  for (const int field : rCriteria.GetFields()) {
    text += (text.empty() ? "" : " ") + std::to_string(field);
  }
  return text;
}

class ServiceSearch : public TCService {
 public:
  ServiceSearch() { CountHandle("TCService", 1); }
  ~ServiceSearch() override { CountHandle("TCService", -1); }

  int FindService(const TCCriteriaHelper& rCriteria, TCServiceData& rData, int maxCount) override {
    Recorder call("TCService::FindService", TextOf(rCriteria), maxCount);
    if (call.Fails()) {
      return call.ReturnFault();
    }
    State& state = GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    int found = 0;
    for (const Service& service : state.services) {
      if (found < maxCount && Matches(service, rCriteria)) {
        if (found++ == 0) {
          Copy(service, rCriteria, rData);
        }
      }
    }
    return call.Return(found);
  }
};

class Navigation : public TCServiceNavigation {
 public:
  Navigation() { CountHandle("TCServiceNavigation", 1); }
  ~Navigation() override { CountHandle("TCServiceNavigation", -1); }

  int GetTVMode(TSTvMode& rMode) override {
    Recorder call("TCServiceNavigation::GetTVMode");
    if (call.Fails()) {
      return call.ReturnFault();
    }
    State& state = GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    rMode = state.mode;
    return call.Return(1);
  }

  int GetCurrentServiceInfo(const TSTvMode& rMode, const TCCriteriaHelper& rCriteria,
                            TCServiceData& rData) override {
    Recorder call("TCServiceNavigation::GetCurrentServiceInfo", rMode.output, rMode.source,
                  TextOf(rCriteria));
    if (call.Fails()) {
      return call.ReturnFault();
    }
    State& state = GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    if (!state.current) {
      return call.Return(0);
    }
    Copy(*state.current, rCriteria, rData);
    return call.Return(1);
  }
};

std::vector<TVSSignalCallback> CallbacksFor(int signal, bool all) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  std::vector<TVSSignalCallback> callbacks;
  for (const auto& subscriber : state.subscribers) {
    const auto asked = [&](const auto& subscription) {
      return subscription.first == subscriber.get() && subscription.second.signal == signal;
    };
    if (all || std::any_of(state.subscriptions.begin(), state.subscriptions.end(), asked)) {
      callbacks.push_back(subscriber->callback);
    }
  }
  return callbacks;
}

std::size_t Fire(int signal, std::vector<std::uint8_t> payload, bool all) {
  constexpr std::size_t kShortestPayload = 8;
  payload.resize(std::max(payload.size(), kShortestPayload));
  const auto callbacks = CallbacksFor(signal, all);
  for (const TVSSignalCallback callback : callbacks) {
    callback(signal, payload.data(), nullptr);
  }
  return callbacks.size();
}

}  // namespace

std::size_t FireTvSignal(int signal, const std::vector<std::uint8_t>& payload) {
  return Fire(signal, payload, false);
}

std::size_t FireTvSignalToAll(int signal, const std::vector<std::uint8_t>& payload) {
  return Fire(signal, payload, true);
}

std::size_t FireTvSignalOnThread(int signal, const std::vector<std::uint8_t>& payload) {
  std::size_t called = 0;
  std::thread([&] {
    pthread_setname_np(pthread_self(), "tv-signals");
    called = Fire(signal, payload, false);
  }).join();
  return called;
}

std::vector<TvSubscription> TvSubscriptions() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  std::vector<TvSubscription> subscriptions;
  for (const auto& [subscriber, subscription] : state.subscriptions) {
    subscriptions.push_back(subscription);
  }
  return subscriptions;
}

Service MakeService(std::uint64_t id, const std::string& package) {
  return {{{kServiceIDField, id}}, {{kPackageIDField, package}}};
}

void AddService(const Service& service) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.services.push_back(service);
}

void ClearServices() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.services.clear();
}

void SetCurrentService(const Service& service) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.current = service;
}

void ClearCurrentService() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.current.reset();
}

void SetTvMode(int output, int source) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.mode.output = output;
  state.mode.source = source;
}

void ResetTvService() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.services.clear();
  state.current.reset();
  state.mode = {};
  state.subscriptions.clear();
  state.subscribers.clear();
}

}  // namespace fake

using fake::Recorder;

int TVServiceAPI::CreateSignalSubscriber(TVSSignalCallback pCallback,
                                         TCSignalSubscriber** ppSubscriber) {
  Recorder call("TVServiceAPI::CreateSignalSubscriber", fake::Presence(pCallback));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  if (pCallback == nullptr || ppSubscriber == nullptr) {
    return call.Return(-1);
  }
  fake::State& state = fake::GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.subscribers.push_back(std::make_unique<fake::Subscriber>(pCallback));
  *ppSubscriber = state.subscribers.back().get();
  return call.Return(0);
}

int TVServiceAPI::CreateService(TCService** ppService) {
  Recorder call("TVServiceAPI::CreateService");
  *ppService = nullptr;
  if (call.Fails()) {
    return call.ReturnFault();
  }
  *ppService = new fake::ServiceSearch;  // the caller's until Destroy()
  return call.Return(0);
}

int TVServiceAPI::CreateServiceNavigation(int output, int source,
                                          TCServiceNavigation** ppNavigation) {
  Recorder call("TVServiceAPI::CreateServiceNavigation", output, source);
  *ppNavigation = nullptr;
  if (call.Fails()) {
    return call.ReturnFault();
  }
  *ppNavigation = new fake::Navigation;  // the caller's until Destroy()
  return call.Return(0);
}

void TVServiceAPI::Destroy(TCService* pService) {
  Recorder call("TVServiceAPI::Destroy", pService == nullptr ? "null" : "TCService");
  delete pService;
  call.ReturnNothing();
}

void TVServiceAPI::Destroy(TCServiceNavigation* pNavigation) {
  Recorder call("TVServiceAPI::Destroy", pNavigation == nullptr ? "null" : "TCServiceNavigation");
  delete pNavigation;
  call.ReturnNothing();
}
