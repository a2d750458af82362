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

#include "fake/handles.h"
#include "fake/packaged_apps.h"
#include "fake/recorder.h"
#include "fake/resets.h"

struct app_context_s {
  unsigned long number = 0;
  pid_t pid = 0;
};

namespace fake {
namespace {

struct State {
  Handles<app_context_s> contexts{"app_context"};
  std::mutex mutex;
  // Guarded by mutex.
  std::set<std::string> known;
  std::map<std::string, pid_t> running;
  std::vector<Kill> kills;
  // Destroyed contexts stay in memory: callers ask them for their pid.
  std::map<app_context_h, std::shared_ptr<app_context_s>> destroyed;
  bool destroyedAnswer = true;
};

State& GetState() {
  static auto* s_state = new State;
  return *s_state;
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

std::string TextOf(app_context_h context) {
  State& state = GetState();
  std::unique_lock<std::mutex> lock(state.mutex);
  const auto found = state.destroyed.find(context);
  if (found != state.destroyed.end()) {
    return "app_context#" + std::to_string(found->second->number);
  }
  lock.unlock();
  return state.contexts.TextOf(context);
}

std::shared_ptr<app_context_s> FindEvenDestroyed(app_context_h context) {
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

void AddKnownApp(const std::string& app) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.known.insert(app);
}

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

using fake::GetState;
using fake::Recorder;

int app_manager_is_running(const char* app_id, bool* running) {
  Recorder call("app_manager_is_running", app_id);
  if (call.Fails()) {
    return call.ReturnFault();
  }
  if (app_id == nullptr || running == nullptr) {
    return call.Return(static_cast<int>(APP_MANAGER_ERROR_INVALID_PARAMETER));
  }
  *running = fake::IsRunning(app_id);
  return call.Return(0);
}

int app_manager_get_app_context(const char* app_id, app_context_h* app_context) {
  Recorder call("app_manager_get_app_context", app_id);
  if (call.Fails()) {
    return call.ReturnFault();
  }
  if (app_id == nullptr || app_context == nullptr) {
    return call.Return(static_cast<int>(APP_MANAGER_ERROR_INVALID_PARAMETER));
  }
  const auto pid = fake::PidOf(app_id);
  if (!pid) {
    return call.Return(static_cast<int>(fake::IsKnown(app_id) ? APP_MANAGER_ERROR_APP_NO_RUNNING
                                                              : APP_MANAGER_ERROR_NO_SUCH_APP));
  }
  auto object = std::make_shared<app_context_s>();
  object->pid = *pid;
  *app_context = GetState().contexts.Add(object);
  return call.Return(0);
}

int app_manager_terminate_app(app_context_h app_context) {
  Recorder call("app_manager_terminate_app", fake::TextOf(app_context));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const bool known = GetState().contexts.Find(app_context) != nullptr;
  return call.Return(known ? 0 : static_cast<int>(APP_MANAGER_ERROR_INVALID_PARAMETER));
}

int app_context_destroy(app_context_h app_context) {
  Recorder call("app_context_destroy", fake::TextOf(app_context));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  fake::State& state = GetState();
  const auto object = state.contexts.Find(app_context);
  if (!object || !state.contexts.Remove(app_context)) {
    return call.Return(static_cast<int>(APP_MANAGER_ERROR_INVALID_PARAMETER));
  }
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.destroyed[app_context] = object;
  return call.Return(0);
}

int app_context_get_pid(app_context_h app_context, pid_t* pid) {
  Recorder call("app_context_get_pid", fake::TextOf(app_context));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const auto object = fake::FindEvenDestroyed(app_context);
  if (!object || pid == nullptr) {
    return call.Return(static_cast<int>(APP_MANAGER_ERROR_INVALID_PARAMETER));
  }
  *pid = object->pid;
  return call.Return(0);
}

extern "C" int __wrap_kill(pid_t pid, int signal) {
  Recorder call("kill", static_cast<int>(pid), signal);
  const int result = call.Fails() ? call.ReturnFault() : fake::Signal(pid, signal);
  fake::Note({pid, signal, result});
  return call.Return(result);
}
