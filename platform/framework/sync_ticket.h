// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <FCQueue.h>

#include <condition_variable>
#include <mutex>

namespace framework {

/// The sender's side of a synchronous event: lives on the stack of the sender, which waits for it.
class SyncTicket {
 public:
  /// The ticket is not used after this has returned.
  void Finish(bool handled) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_done = true;
    m_handled = handled;
    // Under the lock: the waiting sender may destroy the ticket as soon as it has the lock.
    m_condition.notify_one();
  }

  /// True when the event was handled, false when it was dropped.
  bool Wait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_condition.wait(lock, [this] { return m_done; });
    return m_handled;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_condition;
  bool m_done = false;     // guarded by m_mutex
  bool m_handled = false;  // guarded by m_mutex
};

/// The two ends of a queue, for synchronous events. Safe from any thread.
struct TicketQueue {
  /// As FCQueue::Push(), and waits until the event was handled (true) or dropped (false).
  static bool PushAndWait(FCQueue& queue, const FSEvent& rEvent, bool bUrgent);
  /// As FCQueue::Pop(). The caller finishes the ticket, which is null for an event that nobody
  /// waits for.
  static bool Pop(FCQueue& queue, FSEvent& rEvent, SyncTicket*& ticket);
};

}  // namespace framework
