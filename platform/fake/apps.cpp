// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/apps.h"

#include <app_context.h>
#include <app_manager_extension.h>

#include <cerrno>
#include <csignal>
#include <map>
#include <memory>
#include <mutex>
#include <set>

#include "fake/packaged_apps.h"
#include "fake/platform_call.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct Context {
  pid_t pid = 0;
};

struct State {
  Handles<app_context_h, Context> contexts{"app_context"};
  std::mutex mutex;
  // Guarded by mutex.
  std::set<std::string> known;
  std::map<std::string, pid_t> running;
  std::vector<Kill> kills;
  // Destroyed contexts are kept: callers ask them for their pid.
  std::map<app_context_h, std::shared_ptr<Context>> destroyed;
  bool destroyedAnswer = true;
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

std::optional<pid_t> PidOf(const std::string& app) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto found = state.running.find(app);
  return found == state.running.end() ? std::nullopt : std::optional<pid_t>(found->second);
}

bool IsKnown(const std::string& app) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.known.count(app) != 0 || IsPackagedApp(app);
}

platform::Value Describe(app_context_h context) {
  return GetState().contexts.Describe(context);
}

std::shared_ptr<Context> FindEvenDestroyed(app_context_h context) {
  State& state = GetState();
  if (auto object = state.contexts.Find(context)) {
    return object;
  }
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto found = state.destroyed.find(context);
  return state.destroyedAnswer && found != state.destroyed.end() ? found->second : nullptr;
}

int Signal(pid_t pid, int signal) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  for (auto app = state.running.begin(); app != state.running.end(); ++app) {
    if (app->second == pid) {
      if (signal == SIGKILL) {
        state.running.erase(app);
      }
      return 0;
    }
  }
  errno = ESRCH;
  return -1;
}

void Note(const Kill& kill) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.kills.push_back(kill);
}

}  // namespace

void SetRunning(const std::string& app, pid_t pid) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.known.insert(app);
  state.running[app] = pid;
}

void SetStopped(const std::string& app) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.running.erase(app);
}

bool IsRunning(const std::string& app) {
  return PidOf(app).has_value();
}

void SetDestroyedContextsAnswer(bool answer) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.destroyedAnswer = answer;
}

std::vector<Kill> Kills() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.kills;
}

void ResetApps() {
  State& state = GetState();
  state.contexts.Clear();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.known.clear();
  state.running.clear();
  state.kills.clear();
  state.destroyed.clear();
  state.destroyedAnswer = true;
}

}  // namespace fake

using fake::FAILURE;
using fake::GetState;
using fake::PlatformCall;

int app_manager_is_running(const char* app_id, bool* running) {
  PlatformCall call("app_manager_is_running", app_id);
  return call.Run(FAILURE, [&]() -> int {
    if (app_id == nullptr || running == nullptr) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    *running = fake::IsRunning(app_id);
    return 0;
  });
}

int app_manager_get_app_context(const char* app_id, app_context_h* app_context) {
  PlatformCall call("app_manager_get_app_context", app_id);
  return call.Run(FAILURE, [&]() -> int {
    if (app_id == nullptr || app_context == nullptr) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    const auto pid = fake::PidOf(app_id);
    if (!pid) {
      return fake::IsKnown(app_id) ? APP_MANAGER_ERROR_APP_NO_RUNNING
                                   : APP_MANAGER_ERROR_NO_SUCH_APP;
    }
    auto object = std::make_shared<fake::Context>();
    object->pid = *pid;
    *app_context = GetState().contexts.Add(object);
    return 0;
  });
}

int app_manager_terminate_app(app_context_h app_context) {
  PlatformCall call("app_manager_terminate_app", fake::Describe(app_context));
  return call.Run(FAILURE, [&]() -> int {
    const bool known = GetState().contexts.Find(app_context) != nullptr;
    return known ? 0 : static_cast<int>(APP_MANAGER_ERROR_INVALID_PARAMETER);
  });
}

int app_context_destroy(app_context_h app_context) {
  PlatformCall call("app_context_destroy", fake::Describe(app_context));
  return call.Run(FAILURE, [&]() -> int {
    fake::State& state = GetState();
    const auto object = state.contexts.Take(app_context);
    if (!object) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.destroyed[app_context] = object;
    return 0;
  });
}

int app_context_get_pid(app_context_h app_context, pid_t* pid) {
  PlatformCall call("app_context_get_pid", fake::Describe(app_context));
  return call.Run(FAILURE, [&]() -> int {
    const auto object = fake::FindEvenDestroyed(app_context);
    if (!object || pid == nullptr) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    *pid = object->pid;
    return 0;
  });
}

extern "C" int __wrap_kill(pid_t pid, int signal) {
  PlatformCall call("kill", static_cast<int>(pid), signal);
  const int result = call.Run(FAILURE, [&] { return fake::Signal(pid, signal); });
  fake::Note({pid, signal, result});
  return result;
}
