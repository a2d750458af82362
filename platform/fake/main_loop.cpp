// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/main_loop.h"

#include <smart_deadlock.h>

#include <cstddef>
#include <memory>
#include <mutex>

#include "fake/platform_call.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct Loop {};

struct State {
  Handles<void*, Loop> loops{"main_loop"};
  std::mutex mutex;
  // Guarded by mutex.
  std::function<void()> body;
  void* last = nullptr;
  int watchdogTimeout = 0;
  std::vector<void*> notifications;
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

platform::Value DescribeLoop(void* loop) {
  return GetState().loops.Describe(loop);
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

using fake::FAILURE;
using fake::GetState;
using fake::PlatformCall;

int smart_deadlock_register_watchdog_service(int timeout_seconds) {
  PlatformCall call("smart_deadlock_register_watchdog_service", timeout_seconds);
  return call.Run(FAILURE, [&]() -> int {
    const std::lock_guard<std::mutex> lock(GetState().mutex);
    GetState().watchdogTimeout = timeout_seconds;
    return 0;
  });
}

int smart_deadlock_watchdog_notify(void* context) {
  PlatformCall call("smart_deadlock_watchdog_notify", fake::DescribeLoop(context));
  return call.Run(FAILURE, [&]() -> int {
    const std::lock_guard<std::mutex> lock(GetState().mutex);
    GetState().notifications.push_back(context);
    return 0;
  });
}

// The linker puts these in place of GLib's and libc's functions. The types are those of GLib,
// written in plain C++.
extern "C" {

void* __wrap_g_main_loop_new(void* context, int isRunning) {
  PlatformCall call("g_main_loop_new", context, isRunning);
  return call.Run<void*>(
      nullptr,
      [] {
        void* loop = GetState().loops.Add(std::make_shared<fake::Loop>());
        const std::lock_guard<std::mutex> lock(GetState().mutex);
        GetState().last = loop;
        return loop;
      },
      fake::DescribeLoop);
}

void __wrap_g_main_loop_run(void* loop) {
  PlatformCall call("g_main_loop_run", fake::DescribeLoop(loop));
  std::unique_lock<std::mutex> lock(GetState().mutex);
  const auto body = GetState().body;
  lock.unlock();
  if (body) {
    body();
  }
}

void __wrap_g_main_loop_unref(void* loop) {
  PlatformCall call("g_main_loop_unref", fake::DescribeLoop(loop));
  GetState().loops.Take(loop);
}

int __wrap_malloc_trim(std::size_t pad) {
  PlatformCall call("malloc_trim", pad);
  return call.Run(FAILURE, [] { return 1; });
}

void __wrap_sync() {
  PlatformCall call("sync");
}

}  // extern "C"
