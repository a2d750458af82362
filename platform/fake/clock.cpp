// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/clock.h"

#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "fake/resets.h"

extern "C" {
std::time_t __real_time(std::time_t* result);
int __real_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                  clockid_t clock, const timespec* limit);
}

namespace fake {
namespace {

using Nanoseconds = std::chrono::nanoseconds;

/// One thread that waits in manual mode; lives on its stack.
struct Waiter {
  pthread_cond_t* condition = nullptr;
  pthread_mutex_t* mutex = nullptr;
  Nanoseconds limit{0};
  bool timedOut = false;  // guarded by the state's mutex
};

struct State {
  std::mutex mutex;
  // Guarded by mutex.
  std::optional<std::time_t> time;
  Waits mode = Waits::Real;
  /// The value of the steady clock while it is stopped.
  Nanoseconds steady{0};
  /// How far the steady clock is ahead of the machine's clock while it runs.
  Nanoseconds ahead{0};
  std::vector<Waiter*> waiters;
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

Nanoseconds ToNanoseconds(const timespec& time) {
  return std::chrono::seconds(time.tv_sec) + Nanoseconds(time.tv_nsec);
}

timespec ToTimespec(Nanoseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
  return {static_cast<std::time_t>(seconds.count()), static_cast<long>((time - seconds).count())};
}

Nanoseconds MachineClock() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return ToNanoseconds(now);
}

/// The caller holds the mutex.
Nanoseconds SteadyNow(const State& state) {
  return state.mode == Waits::Real ? MachineClock() + state.ahead : state.steady;
}

/// True when the waiter, which called with its mutex locked, has unlocked it: it waits, or is about
/// to return. The caller holds the state's mutex, so that the waiter cannot leave.
bool IsInWait(const Waiter& waiter) {
  if (pthread_mutex_trylock(waiter.mutex) != 0) {
    return false;
  }
  pthread_mutex_unlock(waiter.mutex);
  return true;
}

int WaitInManualMode(State& state, std::unique_lock<std::mutex>& lock, Waiter& waiter) {
  state.waiters.push_back(&waiter);
  lock.unlock();
  const int error = pthread_cond_wait(waiter.condition, waiter.mutex);
  lock.lock();
  state.waiters.erase(std::find(state.waiters.begin(), state.waiters.end(), &waiter));
  if (error != 0) {
    return error;
  }
  return waiter.timedOut ? ETIMEDOUT : 0;
}

int TimeOutAtOnce(State& state, std::unique_lock<std::mutex>& lock, const Waiter& waiter) {
  state.steady = std::max(state.steady, waiter.limit);
  lock.unlock();
  // During a wait other threads may lock the mutex.
  pthread_mutex_unlock(waiter.mutex);
  std::this_thread::yield();
  pthread_mutex_lock(waiter.mutex);
  return ETIMEDOUT;
}

int Wait(pthread_cond_t* condition, pthread_mutex_t* mutex, const timespec* limit) {
  State& state = GetState();
  std::unique_lock<std::mutex> lock(state.mutex);
  Waiter waiter{condition, mutex, ToNanoseconds(*limit)};
  if (state.mode == Waits::Real) {
    const timespec machineLimit = ToTimespec(waiter.limit - state.ahead);
    lock.unlock();
    return __real_pthread_cond_clockwait(condition, mutex, CLOCK_MONOTONIC, &machineLimit);
  }
  if (state.mode == Waits::TimeOut || waiter.limit <= state.steady) {
    return TimeOutAtOnce(state, lock, waiter);
  }
  return WaitInManualMode(state, lock, waiter);
}

/// A waiter that must time out now and has not been woken yet; null when there is none. The caller
/// holds the mutex.
Waiter* FindOverdue(const State& state) {
  for (Waiter* waiter : state.waiters) {
    if (!waiter->timedOut && waiter->limit <= state.steady) {
      return waiter;
    }
  }
  return nullptr;
}

/// Wakes one overdue waiter. False when none is left.
bool WakeOverdue(std::size_t* woken) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  Waiter* waiter = FindOverdue(state);
  if (waiter == nullptr) {
    return false;
  }
  if (IsInWait(*waiter)) {
    waiter->timedOut = true;
    ++*woken;
    pthread_cond_broadcast(waiter->condition);
  }
  return true;
}

}  // namespace

void SetTime(std::time_t now) {
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  GetState().time = now;
}

void AdvanceTime(std::time_t seconds) {
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  GetState().time = GetState().time.value_or(__real_time(nullptr)) + seconds;
}

void UseRealTime() {
  const std::lock_guard<std::mutex> lock(GetState().mutex);
  GetState().time.reset();
}

void SetWaits(Waits mode) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const Nanoseconds now = SteadyNow(state);
  state.mode = mode;
  state.steady = now;
  // The steady clock never goes back.
  state.ahead = std::max(now - MachineClock(), Nanoseconds(0));
}

std::size_t AdvanceWaits(unsigned int milliseconds) {
  {
    State& state = GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    state.steady += std::chrono::milliseconds(milliseconds);
  }
  std::size_t woken = 0;
  while (WakeOverdue(&woken)) {
    std::this_thread::yield();
  }
  return woken;
}

std::size_t WaitingThreads() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto& all = state.waiters;
  return static_cast<std::size_t>(std::count_if(
      all.begin(), all.end(), [](Waiter* w) { return !w->timedOut && IsInWait(*w); }));
}

void ResetClock() {
  UseRealTime();
  SetWaits(Waits::Real);
}

}  // namespace fake

// The linker puts these in place of the functions of libc and std::chrono.
extern "C" {

std::time_t __wrap_time(std::time_t* result) {
  std::unique_lock<std::mutex> lock(fake::GetState().mutex);
  const auto set = fake::GetState().time;
  lock.unlock();
  if (!set) {
    return __real_time(result);
  }
  if (result != nullptr) {
    *result = *set;
  }
  return *set;
}

int __wrap_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                  clockid_t clock, const timespec* limit) {
  if (clock != CLOCK_MONOTONIC) {
    return __real_pthread_cond_clockwait(condition, mutex, clock, limit);
  }
  return fake::Wait(condition, mutex, limit);
}

#ifdef __clang__
// The name is a mangled one: no C code calls it.
#pragma clang diagnostic ignored "-Wreturn-type-c-linkage"
#endif
/// std::chrono::steady_clock::now(), which a timed wait asks whether its limit has passed.
std::chrono::steady_clock::time_point __wrap__ZNSt6chrono3_V212steady_clock3nowEv() {
  const std::lock_guard<std::mutex> lock(fake::GetState().mutex);
  return std::chrono::steady_clock::time_point(fake::SteadyNow(fake::GetState()));
}

}  // extern "C"
