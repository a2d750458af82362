// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "framework/system_alarm_clock.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <utility>

namespace framework {
namespace {

std::atomic<AlarmClock*> g_clock{nullptr};

}  // namespace

void SetAlarmClock(AlarmClock* clock) {
  g_clock = clock;
}

AlarmClock& GetAlarmClock() {
  if (AlarmClock* clock = g_clock) {
    return *clock;
  }
  // Never deleted: its thread runs until the process ends.
  static auto* systemClock = new SystemAlarmClock;
  return *systemClock;
}

unsigned long SystemAlarmClock::Start(const AlarmRequest& request, std::function<bool()> tick) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (!m_running) {
    std::thread([this] { Run(); }).detach();
    m_running = true;
  }
  // A period of 0 would keep the thread spinning.
  const std::chrono::milliseconds period(std::max(request.periodMs, 1));
  m_entries[++m_lastNumber] = {period, std::chrono::steady_clock::now() + period, std::move(tick)};
  m_changed.notify_one();
  return m_lastNumber;
}

void SystemAlarmClock::Stop(unsigned long number) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_entries.erase(number);
}

void SystemAlarmClock::Run() {
  pthread_setname_np(pthread_self(), "FCStateAlarm");
  std::unique_lock<std::mutex> lock(m_mutex);
  for (;;) {
    const auto entry = First();
    if (entry == m_entries.end()) {
      m_changed.wait(lock);
    } else if (entry->second.next <= std::chrono::steady_clock::now()) {
      Tick(entry);
    } else {
      // A copy: the entry may be erased during the wait.
      const Moment next = entry->second.next;
      m_changed.wait_until(lock, next);
    }
  }
}

std::map<unsigned long, SystemAlarmClock::Entry>::iterator SystemAlarmClock::First() {
  return std::min_element(m_entries.begin(), m_entries.end(), [](const auto& a, const auto& b) {
    return a.second.next < b.second.next;
  });
}

void SystemAlarmClock::Tick(std::map<unsigned long, Entry>::iterator entry) {
  if (entry->second.tick()) {
    entry->second.next += entry->second.period;
  } else {
    m_entries.erase(entry);
  }
}

}  // namespace framework
