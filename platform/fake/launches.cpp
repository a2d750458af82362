// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_control.h>

#include <deque>
#include <memory>
#include <mutex>

#include "fake/control/apps.h"
#include "fake/handles.h"
#include "fake/recorder.h"
#include "fake/resets.h"

struct app_control_s {
  unsigned long number = 0;
  fake::Launch launch;  // one owner at a time
};

namespace fake {
namespace {

struct State {
  Handles<app_control_s> requests{"app_control"};
  std::mutex mutex;
  // Guarded by mutex.
  std::vector<Launch> launches;
  std::deque<int> results;
  std::function<int(const Launch&)> hook;
};

State& GetState() {
  static auto* s_state = new State;
  return *s_state;
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

/// A setter's way: record, fault, null check, then the change.
template <typename Change>
int Set(Recorder& call, app_control_h handle, const char* text, Change change) {
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const auto object = GetState().requests.Find(handle);
  if (!object || text == nullptr) {
    return call.Return(static_cast<int>(APP_CONTROL_ERROR_INVALID_PARAMETER));
  }
  change(object->launch);
  return call.Return(0);
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

using fake::GetState;
using fake::Recorder;

int app_control_create(app_control_h* app_control) {
  Recorder call("app_control_create");
  if (app_control == nullptr) {
    return call.Return(static_cast<int>(APP_CONTROL_ERROR_INVALID_PARAMETER));
  }
  if (call.Fails()) {
    *app_control = nullptr;
    return call.ReturnFault();
  }
  *app_control = GetState().requests.Add(std::make_shared<app_control_s>());
  return call.Return(0);
}

int app_control_destroy(app_control_h app_control) {
  Recorder call("app_control_destroy", GetState().requests.TextOf(app_control));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const bool known = GetState().requests.Remove(app_control);
  return call.Return(known ? 0 : static_cast<int>(APP_CONTROL_ERROR_INVALID_PARAMETER));
}

int app_control_set_app_id(app_control_h app_control, const char* app_id) {
  Recorder call("app_control_set_app_id", GetState().requests.TextOf(app_control), app_id);
  return fake::Set(call, app_control, app_id,
                   [app_id](fake::Launch& launch) { launch.app = app_id; });
}

int app_control_set_operation(app_control_h app_control, const char* operation) {
  Recorder call("app_control_set_operation", GetState().requests.TextOf(app_control), operation);
  return fake::Set(call, app_control, operation,
                   [operation](fake::Launch& launch) { launch.operation = operation; });
}

int app_control_add_extra_data(app_control_h app_control, const char* key, const char* value) {
  Recorder call("app_control_add_extra_data", GetState().requests.TextOf(app_control), key, value);
  return fake::Set(call, app_control, key == nullptr ? nullptr : value,
                   [key, value](fake::Launch& launch) { launch.extra.emplace_back(key, value); });
}

int app_control_send_launch_request(app_control_h app_control, app_control_reply_cb reply_cb,
                                    void* user_data) {
  Recorder call("app_control_send_launch_request", GetState().requests.TextOf(app_control),
                fake::Presence(reply_cb), fake::Presence(user_data));
  const auto object = GetState().requests.Find(app_control);
  if (!object) {
    return call.Fails() ? call.ReturnFault()
                        : call.Return(static_cast<int>(APP_CONTROL_ERROR_INVALID_PARAMETER));
  }
  const int result = call.Fails() ? call.ReturnFault() : fake::Ask(object->launch);
  fake::Note(object->launch, result);
  return call.Return(result);
}
