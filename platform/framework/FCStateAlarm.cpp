// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <mutex>

#include "FCTask.h"
#include "framework/alarm_clock.h"
#include "framework/backend.h"

struct FCStateAlarm::Impl {
  std::mutex mutex;  // held while the alarm is started or stopped; a tick does not take it
  framework::AlarmClock* pClock = nullptr;  // guarded by mutex
  unsigned long number = 0;                 // guarded by mutex
  std::atomic<bool> running{false};
};

namespace {

/// Posts one event each time it is called; false after the last one.
class Poster {
 public:
  Poster(FCTask* pTask, unsigned int type, int repeat)
      : m_pTask(pTask), m_type(type), m_left(repeat), m_endless(repeat <= 0) {}

  bool operator()() {
    FSEvent event;
    event.pReceiver = m_pTask->GetHandler();
    event.type = m_type;
    // The event is lost when the queue is full.
    m_pTask->Send(event, false, false);
    return m_endless || --m_left > 0;
  }

 private:
  FCTask* m_pTask;
  unsigned int m_type;
  int m_left;
  bool m_endless;
};

}  // namespace

FCStateAlarm::FCStateAlarm() : m_pImpl(std::make_unique<Impl>()) {}

FCStateAlarm::~FCStateAlarm() {
  if (IsRunning()) {
    Destroy();
  }
}

bool FCStateAlarm::Create(FCTask* pTask, unsigned int type, int periodMs, int repeat) {
  const std::string sTask = pTask == nullptr ? "null" : pTask->GetName();
  framework::Call call("FCStateAlarm::Create", sTask, type, periodMs, repeat);
  return call.Run(false, [&] {
    const std::lock_guard<std::mutex> lock(m_pImpl->mutex);
    if (pTask == nullptr || m_pImpl->running) {
      return false;
    }
    m_pImpl->running = true;
    m_pImpl->pClock = &framework::GetAlarmClock();
    m_pImpl->number =
        m_pImpl->pClock->Start({sTask, type, periodMs, repeat}, Poster(pTask, type, repeat));
    return true;
  });
}

bool FCStateAlarm::Destroy() {
  framework::Call call("FCStateAlarm::Destroy");
  const std::lock_guard<std::mutex> lock(m_pImpl->mutex);
  if (!m_pImpl->running) {
    return call.Return(false);
  }
  m_pImpl->pClock->Stop(m_pImpl->number);
  m_pImpl->running = false;
  return call.Return(true);
}

bool FCStateAlarm::IsRunning() const {
  return m_pImpl->running;
}
