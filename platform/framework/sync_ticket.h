// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <mutex>

namespace framework {

/// The sender's side of a synchronous event: lives on the stack of the sender, which waits for it.
class SyncTicket {
 public:
  /// The sender is not touched any more when this returns.
  void Finish(bool handled) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_done = true;
    m_handled = handled;
    // Under the lock: the sender's stack frame goes away as soon as the sender gets it.
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

/// The ticket that the next FCQueue::Push() of this thread attaches to its event, until it is null
/// again.
void SetTicketToPush(SyncTicket* ticket);
/// The ticket of the event that FCQueue::Pop() gave this thread last, or null.
SyncTicket* GetPoppedTicket();

}  // namespace framework
