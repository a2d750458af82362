// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/main_loop.h"

#include <smart_deadlock.h>

#include <cstddef>
#include <memory>
#include <mutex>

#include "fake/handles.h"
#include "fake/recorder.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct Loop {
  unsigned long number = 0;
};

struct State {
  Handles<Loop> loops{"main_loop"};
  std::mutex mutex;
  // Guarded by mutex.
  std::function<void()> body;
  Loop* last = nullptr;
  int watchdogTimeout = 0;
  std::vector<void*> notifications;
};

State& GetState() {
  static auto* s_state = new State;
  return *s_state;
}

std::string LoopText(const void* loop) {
  return GetState().loops.TextOf(static_cast<const Loop*>(loop));
}

}  // namespace

void SetMainLoopBody(std::function<void()> body) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.body = std::move(body);
}

void* MainLoop() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.last;
}

int WatchdogTimeout() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.watchdogTimeout;
}

std::vector<void*> WatchdogNotifications() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.notifications;
}

void ResetMainLoop() {
  State& state = GetState();
  state.loops.Clear();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.body = nullptr;
  state.last = nullptr;
  state.watchdogTimeout = 0;
  state.notifications.clear();
}

}  // namespace fake

using fake::GetState;
using fake::Recorder;

int smart_deadlock_register_watchdog_service(int timeout_seconds) {
  Recorder call("smart_deadlock_register_watchdog_service", timeout_seconds);
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  GetState().watchdogTimeout = timeout_seconds;
  return call.Return(0);
}

int smart_deadlock_watchdog_notify(void* context) {
  Recorder call("smart_deadlock_watchdog_notify", fake::LoopText(context));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  GetState().notifications.push_back(context);
  return call.Return(0);
}

// In place of GLib and libc, by the linker. The types are GLib's, spelt in C++'s own.
extern "C" {

void* __wrap_g_main_loop_new(void* context, int isRunning) {
  Recorder call("g_main_loop_new", fake::Presence(context), isRunning);
  if (call.Fails()) {
    return call.ReturnAs<void*>(nullptr, "null");
  }
  fake::Loop* loop = GetState().loops.Add(std::make_shared<fake::Loop>());
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  GetState().last = loop;
  return call.ReturnAs<void*>(loop, fake::LoopText(loop));
}

void __wrap_g_main_loop_run(void* loop) {
  Recorder call("g_main_loop_run", fake::LoopText(loop));
  std::unique_lock<std::mutex> lock(GetState().mutex);
  const auto body = GetState().body;
  lock.unlock();
  if (body) {
    body();
  }
  call.ReturnNothing();
}

void __wrap_g_main_loop_unref(void* loop) {
  Recorder call("g_main_loop_unref", fake::LoopText(loop));
  GetState().loops.Remove(static_cast<fake::Loop*>(loop));
  call.ReturnNothing();
}

int __wrap_malloc_trim(std::size_t pad) {
  Recorder call("malloc_trim", static_cast<unsigned long>(pad));
  return call.Fails() ? call.ReturnFault() : call.Return(1);
}

void __wrap_sync() {
  Recorder call("sync");
  call.ReturnNothing();
}

}  // extern "C"
