// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/timers.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>

#include "fake/platform_call.h"
#include "fake/resets.h"
#include "framework/alarm_clock.h"

namespace fake {
namespace {

struct Entry {
  Timer timer;
  unsigned long due = 0;
};

struct State {
  std::mutex mutex;
  // Guarded by mutex.
  std::map<unsigned int, Entry> timers;
  unsigned int lastID = 0;
  unsigned long now = 0;  // milliseconds that have passed by AdvanceTimers()
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

/// Alarms that tick only on request of the test.
class AlarmTable : public framework::AlarmClock {
 public:
  unsigned long Start(const framework::AlarmRequest& request, std::function<bool()> tick) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Alarm alarm{++m_last, request.task, request.type, request.periodMs, request.repeat};
    m_alarms[m_last] = {alarm, std::move(tick)};
    return m_last;
  }

  void Stop(unsigned long number) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_alarms.erase(number);
  }

  std::vector<Alarm> List() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<Alarm> alarms;
    for (const auto& [id, entry] : m_alarms) {
      alarms.push_back(entry.first);
    }
    return alarms;
  }

  std::size_t Fire(unsigned int type) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::size_t fired = 0;
    for (auto next = m_alarms.begin(); next != m_alarms.end();) {
      const auto entry = next++;
      Alarm& alarm = entry->second.first;
      if (alarm.type != type) {
        continue;
      }
      ++fired;
      const bool more = entry->second.second();
      alarm.left -= alarm.left > 0 ? 1 : 0;
      if (!more) {
        m_alarms.erase(entry);
      }
    }
    return fired;
  }

  void Clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_alarms.clear();
  }

 private:
  std::mutex m_mutex;  // held during a tick, so that Stop() waits for the tick
  std::map<unsigned long, std::pair<Alarm, std::function<bool()>>> m_alarms;
  unsigned long m_last = 0;
};

AlarmTable& GetAlarms() {
  static auto* alarms = new AlarmTable;
  return *alarms;
}

[[maybe_unused]] const bool g_installed = (framework::SetAlarmClock(&GetAlarms()), true);

unsigned int Add(Timer timer) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  timer.id = ++state.lastID;
  state.timers[timer.id] = {timer, state.now + timer.intervalMs};
  return timer.id;
}

bool Remove(unsigned int id) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.timers.erase(id) != 0;
}

/// A failure is the id 0, which no source has.
unsigned int AddRecorded(PlatformCall& call, const Timer& timer) {
  return call.Run(0U, [&] { return Add(timer); });
}

/// The timer that is due first, not later than `until`. Sets the timer to its next moment.
std::optional<unsigned int> NextDue(unsigned long until) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  Entry* first = nullptr;
  for (auto& [id, entry] : state.timers) {
    if (entry.due <= until && (first == nullptr || entry.due < first->due)) {
      first = &entry;
    }
  }
  if (first == nullptr) {
    state.now = until;
    return std::nullopt;
  }
  state.now = first->due;
  first->due += std::max(first->timer.intervalMs, 1U);
  return first->timer.id;
}

unsigned long Now() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.now;
}

}  // namespace

std::vector<Timer> Timers() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  std::vector<Timer> timers;
  for (const auto& [id, entry] : state.timers) {
    timers.push_back(entry.timer);
  }
  return timers;
}

std::vector<Timer> TimersOf(unsigned int intervalMs) {
  std::vector<Timer> timers = Timers();
  const auto other = [intervalMs](const Timer& timer) { return timer.intervalMs != intervalMs; };
  timers.erase(std::remove_if(timers.begin(), timers.end(), other), timers.end());
  return timers;
}

bool FireTimer(unsigned int id) {
  State& state = GetState();
  std::unique_lock<std::mutex> lock(state.mutex);
  const auto found = state.timers.find(id);
  if (found == state.timers.end()) {
    return false;
  }
  const Timer timer = found->second.timer;
  lock.unlock();
  if (timer.function(timer.data) == 0) {
    Remove(id);
  }
  return true;
}

std::size_t FireTimersOf(unsigned int intervalMs) {
  std::size_t fired = 0;
  for (const Timer& timer : TimersOf(intervalMs)) {
    fired += FireTimer(timer.id) ? 1 : 0;
  }
  return fired;
}

std::size_t AdvanceTimers(unsigned int milliseconds) {
  const unsigned long until = Now() + milliseconds;
  std::size_t fired = 0;
  while (const auto id = NextDue(until)) {
    fired += FireTimer(*id) ? 1 : 0;
  }
  return fired;
}

std::vector<Alarm> Alarms() {
  return GetAlarms().List();
}

std::size_t FireAlarms(unsigned int type) {
  return GetAlarms().Fire(type);
}

void ResetTimers() {
  GetAlarms().Clear();
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.timers.clear();
  state.lastID = 0;
  state.now = 0;
}

}  // namespace fake

// The linker puts these in place of GLib's functions. The types are those of GLib, written in plain
// C++.
extern "C" {

unsigned int __wrap_g_timeout_add(unsigned int interval, int (*function)(void*), void* data) {
  fake::PlatformCall call("g_timeout_add", interval, function, data);
  return fake::AddRecorded(call, {0, interval, false, function, data});
}

unsigned int __wrap_g_timeout_add_seconds(unsigned int interval, int (*function)(void*),
                                          void* data) {
  fake::PlatformCall call("g_timeout_add_seconds", interval, function, data);
  return fake::AddRecorded(call, {0, interval * 1000, true, function, data});
}

int __wrap_g_source_remove(unsigned int id) {
  fake::PlatformCall call("g_source_remove", id);
  return call.Run(fake::FAILURE, [&]() -> int { return fake::Remove(id) ? 1 : 0; });
}

}  // extern "C"
