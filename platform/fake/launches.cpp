// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_control.h>

#include <deque>
#include <memory>
#include <mutex>

#include "fake/control/apps.h"
#include "fake/platform_call.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct State {
  Handles<app_control_h, Launch> requests{"app_control"};  // each has one owner at a time
  std::mutex mutex;
  // Guarded by mutex.
  std::vector<Launch> launches;
  std::deque<int> results;
  std::function<int(const Launch&)> hook;
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

std::optional<int> QueuedResult() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  if (state.results.empty()) {
    return std::nullopt;
  }
  const int result = state.results.front();
  state.results.pop_front();
  return result;
}

int Ask(const Launch& launch) {
  State& state = GetState();
  std::unique_lock<std::mutex> lock(state.mutex);
  const auto hook = state.hook;
  lock.unlock();
  const int answer = hook ? hook(launch) : 0;
  return QueuedResult().value_or(answer);
}

void Note(Launch launch, int result) {
  launch.result = result;
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.launches.push_back(std::move(launch));
}

/// Changes a request that is open, by a text that is not null.
template <typename Change>
int Set(PlatformCall& call, app_control_h handle, const char* text, Change change) {
  return call.Run(FAILURE, [&]() -> int {
    const auto launch = GetState().requests.Find(handle);
    if (!launch || text == nullptr) {
      return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    change(*launch);
    return 0;
  });
}

}  // namespace

std::vector<Launch> Launches() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.launches;
}

void ClearLaunches() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.launches.clear();
}

void QueueLaunchResults(const std::vector<int>& results) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.results.insert(state.results.end(), results.begin(), results.end());
}

void SetLaunchHook(std::function<int(const Launch&)> hook) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.hook = std::move(hook);
}

void ResetLaunches() {
  State& state = GetState();
  state.requests.Clear();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.launches.clear();
  state.results.clear();
  state.hook = nullptr;
}

}  // namespace fake

using fake::FAILURE;
using fake::GetState;
using fake::PlatformCall;

int app_control_create(app_control_h* app_control) {
  PlatformCall call("app_control_create");
  if (app_control == nullptr) {
    return call.Return<int>(APP_CONTROL_ERROR_INVALID_PARAMETER);
  }
  *app_control = nullptr;
  return call.Run(FAILURE, [app_control] {
    *app_control = GetState().requests.Add(std::make_shared<fake::Launch>());
    return 0;
  });
}

int app_control_destroy(app_control_h app_control) {
  PlatformCall call("app_control_destroy", GetState().requests.Describe(app_control));
  return call.Run(FAILURE, [&]() -> int {
    const bool known = GetState().requests.Take(app_control) != nullptr;
    return known ? 0 : static_cast<int>(APP_CONTROL_ERROR_INVALID_PARAMETER);
  });
}

int app_control_set_app_id(app_control_h app_control, const char* app_id) {
  PlatformCall call("app_control_set_app_id", GetState().requests.Describe(app_control), app_id);
  return fake::Set(call, app_control, app_id,
                   [app_id](fake::Launch& launch) { launch.app = app_id; });
}

int app_control_set_operation(app_control_h app_control, const char* operation) {
  PlatformCall call("app_control_set_operation", GetState().requests.Describe(app_control),
                    operation);
  return fake::Set(call, app_control, operation,
                   [operation](fake::Launch& launch) { launch.operation = operation; });
}

int app_control_add_extra_data(app_control_h app_control, const char* key, const char* value) {
  PlatformCall call("app_control_add_extra_data", GetState().requests.Describe(app_control), key,
                    value);
  return fake::Set(call, app_control, key == nullptr ? nullptr : value,
                   [key, value](fake::Launch& launch) { launch.extra.emplace_back(key, value); });
}

int app_control_send_launch_request(app_control_h app_control, app_control_reply_cb reply_cb,
                                    void* user_data) {
  PlatformCall call("app_control_send_launch_request", GetState().requests.Describe(app_control),
                    reply_cb, user_data);
  const auto launch = GetState().requests.Find(app_control);
  const int result = call.Run(FAILURE, [&]() -> int {
    return launch ? fake::Ask(*launch) : APP_CONTROL_ERROR_INVALID_PARAMETER;
  });
  if (launch) {
    fake::Note(*launch, result);
  }
  return result;
}
