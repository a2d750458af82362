// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <condition_variable>
#include <map>
#include <mutex>

#include "framework/alarm_clock.h"

namespace framework {

/// Alarms on the steady clock. One thread serves all of them; it starts with the first alarm.
class SystemAlarmClock : public AlarmClock {
 public:
  unsigned long Start(const AlarmRequest& request, std::function<bool()> tick) override;
  void Stop(unsigned long number) override;

 private:
  using Moment = std::chrono::steady_clock::time_point;

  struct Entry {
    std::chrono::milliseconds period{0};
    Moment next;
    std::function<bool()> tick;
  };

  [[noreturn]] void Run();
  /// The entry that is due first; end() when there is none. Needs m_mutex.
  std::map<unsigned long, Entry>::iterator First();
  void Tick(std::map<unsigned long, Entry>::iterator entry);

  std::mutex m_mutex;
  std::condition_variable m_changed;
  // Guarded by m_mutex, which is held during a tick, so that Stop() waits for the tick.
  std::map<unsigned long, Entry> m_entries;
  unsigned long m_lastNumber = 0;
  bool m_running = false;
};

}  // namespace framework
