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
#include "fake/platform_call.h"
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
  static auto* state = new State;
  return *state;
}

struct Subscriber : public TCSignalSubscriber {
  explicit Subscriber(TVSSignalCallback function) : callback(function) {}

  int Subscribe(int signalType, int first, int second, int third, int fourth) override {
    PlatformCall call("TCSignalSubscriber::Subscribe", signalType, first, second, third, fourth);
    return call.Run(FAILURE, [&]() -> int {
      State& state = GetState();
      const std::lock_guard<std::mutex> lock(state.mutex);
      state.subscriptions.push_back({this, {signalType, {first, second, third, fourth}}});
      return 0;
    });
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
    PlatformCall call("TCService::FindService", TextOf(rCriteria), maxCount);
    return call.Run(FAILURE, [&]() -> int {
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
      return found;
    });
  }
};

class Navigation : public TCServiceNavigation {
 public:
  Navigation() { CountHandle("TCServiceNavigation", 1); }
  ~Navigation() override { CountHandle("TCServiceNavigation", -1); }

  int GetTVMode(TSTvMode& rMode) override {
    PlatformCall call("TCServiceNavigation::GetTVMode");
    return call.Run(FAILURE, [&]() -> int {
      State& state = GetState();
      const std::lock_guard<std::mutex> lock(state.mutex);
      rMode = state.mode;
      return 1;
    });
  }

  int GetCurrentServiceInfo(const TSTvMode& rMode, const TCCriteriaHelper& rCriteria,
                            TCServiceData& rData) override {
    PlatformCall call("TCServiceNavigation::GetCurrentServiceInfo", rMode.output, rMode.source,
                      TextOf(rCriteria));
    return call.Run(FAILURE, [&]() -> int {
      State& state = GetState();
      const std::lock_guard<std::mutex> lock(state.mutex);
      if (!state.current) {
        return 0;
      }
      Copy(*state.current, rCriteria, rData);
      return 1;
    });
  }
};

std::vector<TVSSignalCallback> CallbacksFor(int signal) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  std::vector<TVSSignalCallback> callbacks;
  for (const auto& subscriber : state.subscribers) {
    const auto asked = [&](const auto& subscription) {
      return subscription.first == subscriber.get() && subscription.second.signal == signal;
    };
    if (std::any_of(state.subscriptions.begin(), state.subscriptions.end(), asked)) {
      callbacks.push_back(subscriber->callback);
    }
  }
  return callbacks;
}

std::size_t Fire(int signal, std::vector<std::uint8_t> payload) {
  payload.resize(std::max(payload.size(), framework::SHORTEST_PAYLOAD));
  const auto callbacks = CallbacksFor(signal);
  for (const TVSSignalCallback callback : callbacks) {
    callback(signal, payload.data(), nullptr);
  }
  return callbacks.size();
}

}  // namespace

std::size_t FireTvSignal(int signal, const std::vector<std::uint8_t>& payload) {
  return Fire(signal, payload);
}

std::size_t FireTvSignalOnThread(int signal, const std::vector<std::uint8_t>& payload) {
  std::size_t called = 0;
  std::thread([&] {
    pthread_setname_np(pthread_self(), "tv-signals");
    called = Fire(signal, payload);
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
  return {{{SERVICE_ID_FIELD, id}}, {{PACKAGE_ID_FIELD, package}}};
}

void AddService(const Service& service) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.services.push_back(service);
}

void SetCurrentService(const Service& service) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.current = service;
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

using fake::FAILURE;
using fake::PlatformCall;

int TVServiceAPI::CreateSignalSubscriber(TVSSignalCallback pCallback,
                                         TCSignalSubscriber** ppSubscriber) {
  PlatformCall call("TVServiceAPI::CreateSignalSubscriber", pCallback);
  return call.Run(FAILURE, [&]() -> int {
    if (pCallback == nullptr || ppSubscriber == nullptr) {
      return -1;
    }
    fake::State& state = fake::GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.subscribers.push_back(std::make_unique<fake::Subscriber>(pCallback));
    *ppSubscriber = state.subscribers.back().get();
    return 0;
  });
}

int TVServiceAPI::CreateService(TCService** ppService) {
  PlatformCall call("TVServiceAPI::CreateService");
  *ppService = nullptr;
  return call.Run(FAILURE, [&]() -> int {
    *ppService = new fake::ServiceSearch;  // the caller's until Destroy()
    return 0;
  });
}

int TVServiceAPI::CreateServiceNavigation(int output, int source,
                                          TCServiceNavigation** ppNavigation) {
  PlatformCall call("TVServiceAPI::CreateServiceNavigation", output, source);
  *ppNavigation = nullptr;
  return call.Run(FAILURE, [&]() -> int {
    *ppNavigation = new fake::Navigation;  // the caller's until Destroy()
    return 0;
  });
}

void TVServiceAPI::Destroy(TCService* pService) {
  PlatformCall call("TVServiceAPI::Destroy", pService);
  delete pService;
}

void TVServiceAPI::Destroy(TCServiceNavigation* pNavigation) {
  PlatformCall call("TVServiceAPI::Destroy", pNavigation);
  delete pNavigation;
}
