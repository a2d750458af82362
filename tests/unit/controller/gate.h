// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>

#include "support/wait_for.h"

/// Blocks each thread that passes until it is opened.
class Gate {
 public:
  void Pass() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_reached = true;
    m_changed.wait(lock, [this] { return m_open; });
  }
  void Open() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_open = true;
    m_changed.notify_all();
  }
  testing::AssertionResult WaitUntilReached() {
    return support::WaitFor(
        [this] {
          const std::lock_guard<std::mutex> lock(m_mutex);
          return m_reached;
        },
        "somebody at the gate");
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_reached = false;  // guarded by m_mutex
  bool m_open = false;     // guarded by m_mutex
};
