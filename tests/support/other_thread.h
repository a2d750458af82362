// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>
#include <utility>

#include "support/thread_state.h"
#include "support/wait_for.h"

namespace support {

/// Runs an operation on another thread; the destructor joins it if necessary.
class OtherThread {
 public:
  explicit OtherThread(std::function<void()> operation)
      : m_thread([this, operation = std::move(operation)] {
          m_id = gettid();
          operation();
          m_done = true;
        }) {}
  ~OtherThread() { Join(); }
  OtherThread(const OtherThread&) = delete;
  OtherThread& operator=(const OtherThread&) = delete;

  void Join() {
    if (m_thread.joinable()) {
      m_thread.join();
    }
  }
  bool Done() const { return m_done; }
  /// Waits until the operation has ended or sleeps on a lock.
  testing::AssertionResult WaitUntilItStops() const {
    return WaitFor([this] { return m_done || (m_id != 0 && SleepsOnALock(m_id)); },
                   "the end of the operation, or its sleep on a lock");
  }

 private:
  std::atomic<pid_t> m_id{0};
  std::atomic<bool> m_done{false};
  std::thread m_thread;  // last member: the thread uses the others
};

}  // namespace support
