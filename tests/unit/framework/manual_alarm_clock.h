// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <mutex>
#include <utility>

#include "framework/alarm_clock.h"

/// A clock whose alarms tick on request of the test. The framework uses it during its lifetime.
class ManualAlarmClock : public framework::AlarmClock {
 public:
  ManualAlarmClock() { framework::SetAlarmClock(this); }
  ~ManualAlarmClock() override { framework::SetAlarmClock(nullptr); }

  unsigned long Start(const framework::AlarmRequest& request, std::function<bool()> tick) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_request = request;
    m_ticks[++m_last] = std::move(tick);
    return m_last;
  }

  void Stop(unsigned long number) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_ticks.erase(number);
  }

  /// Lets one period of the alarm pass. False after its last event.
  bool Tick(unsigned long number) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto tick = m_ticks.find(number);
    if (tick == m_ticks.end()) {
      return false;
    }
    if (!tick->second()) {
      m_ticks.erase(tick);
    }
    return true;
  }

  framework::AlarmRequest LastRequest() const { return m_request; }

 private:
  std::mutex m_mutex;
  framework::AlarmRequest m_request;
  std::map<unsigned long, std::function<bool()>> m_ticks;
  unsigned long m_last = 0;
};
