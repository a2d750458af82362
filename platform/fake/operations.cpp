// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_control.h>
#include <app_operation.h>

#include <cstring>
#include <map>
#include <mutex>

#include "fake/control/apps.h"
#include "fake/platform_call.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct State {
  std::mutex mutex;
  // Guarded by mutex.
  std::map<std::string, std::string> platform;
  std::map<std::string, std::string> current;
  std::function<void(const std::string&, const std::string&)> hook;
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

void RunHook(const std::string& operation, const std::string& app) {
  State& state = GetState();
  std::unique_lock<std::mutex> lock(state.mutex);
  const auto hook = state.hook;
  lock.unlock();
  if (hook) {
    hook(operation, app);
  }
}

}  // namespace

void SetOperationApp(const std::string& operation, const std::optional<std::string>& app) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  if (app) {
    state.current[operation] = *app;
  } else {
    state.current.erase(operation);
  }
}

void SetPlatformOperationApp(const std::string& operation, const std::string& app) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.platform[operation] = app;
}

std::optional<std::string> OperationApp(const std::string& operation) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  for (const auto* apps : {&state.current, &state.platform}) {
    const auto found = apps->find(operation);
    if (found != apps->end()) {
      return found->second;
    }
  }
  return std::nullopt;
}

void SetOperationHook(
    std::function<void(const std::string& operation, const std::string& app)> hook) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.hook = std::move(hook);
}

void ResetOperations() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.hook = nullptr;
  state.platform.clear();
  state.current.clear();
}

}  // namespace fake

using fake::FAILURE;
using fake::PlatformCall;

int app_operation_get_current_app(const char* operation, char** app_id) {
  PlatformCall call("app_operation_get_current_app", operation);
  return call.Run(FAILURE, [&]() -> int {
    if (operation == nullptr || app_id == nullptr) {
      return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    const auto app = fake::OperationApp(operation);
    *app_id = app ? strdup(app->c_str()) : nullptr;
    return 0;
  });
}

int app_operation_set_current_app(const char* operation, const char* app_id) {
  PlatformCall call("app_operation_set_current_app", operation, app_id);
  return call.Run(FAILURE, [&]() -> int {
    if (operation == nullptr || app_id == nullptr) {
      return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    fake::RunHook(operation, app_id);
    fake::SetOperationApp(operation, app_id);
    return 0;
  });
}

int app_operation_reset_current_app(const char* operation) {
  PlatformCall call("app_operation_reset_current_app", operation);
  return call.Run(FAILURE, [&]() -> int {
    if (operation == nullptr) {
      return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    fake::SetOperationApp(operation, std::nullopt);
    return 0;
  });
}
