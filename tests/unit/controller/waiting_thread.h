// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <future>
#include <thread>

#include "support/thread_state.h"
#include "support/wait_for.h"

/// A thread that runs one operation and is joined at the end of its scope.
class WaitingThread {
 public:
  explicit WaitingThread(const std::function<void()>& operation) {
    std::promise<pid_t> started;
    m_thread = std::thread([this, &started, operation] {
      started.set_value(gettid());
      operation();
      m_ended = true;
    });
    m_id = started.get_future().get();
  }
  ~WaitingThread() { Join(); }
  WaitingThread(const WaitingThread&) = delete;
  WaitingThread& operator=(const WaitingThread&) = delete;

  /// Until the operation sleeps on a lock.
  testing::AssertionResult WaitsForALock() const {
    return support::WaitFor([this] { return support::SleepsOnALock(m_id); },
                            "the thread at a lock");
  }
  bool HasEnded() const { return m_ended; }
  void Join() {
    if (m_thread.joinable()) m_thread.join();
  }

 private:
  std::thread m_thread;
  pid_t m_id = 0;
  std::atomic<bool> m_ended{false};
};
