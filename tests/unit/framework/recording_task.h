// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <FCTask.h>
#include <pthread.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

/// A task that records the types of its events, in order, and can be held in one of them.
class RecordingTask : public FCTask {
 public:
  static constexpr unsigned int HOLD = 1;  ///< stays in this event until LetGo()

  explicit RecordingTask(int queueSize = 64) { Create("RecordingTaskLong", 1000, queueSize); }
  ~RecordingTask() override {
    LetGo();
    Destroy();
  }

  bool Post(unsigned int type, bool bUrgent = false, bool bSync = false) {
    return Send({GetHandler(), type, nullptr, nullptr}, bUrgent, bSync);
  }

  void LetGo() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_free = true;
    m_changed.notify_all();
  }

  bool IsHeld() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_held;
  }

  std::vector<unsigned int> Types() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_types;
  }

  /// The name of the task's thread in the kernel.
  std::string ThreadName() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_threadName;
  }

  int Creations() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_creations;
  }

  bool t_OnEvent(const FSEvent* pEvent) override {
    if (FCTask::t_OnEvent(pEvent)) {
      return true;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    m_types.push_back(pEvent->type);
    if (pEvent->type == HOLD) {
      m_held = true;
      m_changed.wait(lock, [this] { return m_free; });
      m_held = false;
    }
    return true;
  }

  using FCTask::t_PurgeEvents;

 protected:
  bool t_Create() override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_creations;
    m_types.push_back(0);
    char name[16] = {};
    pthread_getname_np(pthread_self(), name, sizeof(name));
    m_threadName = name;
    // Ignored.
    return false;
  }

  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  // Guarded by m_mutex.
  std::vector<unsigned int> m_types;
  std::string m_threadName;
  int m_creations = 0;
  bool m_held = false;
  bool m_free = false;
};
