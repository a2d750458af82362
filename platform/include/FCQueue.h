// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>

#include "FCHandler.h"

namespace framework {
struct TicketQueue;
}

/// A bounded queue of events. Safe from any thread.
class FCQueue {
 public:
  explicit FCQueue(std::size_t capacity);
  ~FCQueue();
  FCQueue(const FCQueue&) = delete;
  FCQueue& operator=(const FCQueue&) = delete;

  /// Copies the event to the end, or to the front when bUrgent. False when full or closed.
  bool Push(const FSEvent& rEvent, bool bUrgent);
  /// Blocks until there is an event (true) or the queue is closed (false).
  bool Pop(FSEvent& rEvent);
  /// Lets Pop return false at once, also with events left.
  void Close();
  /// Events waiting now.
  long Size() const;
  /// Drops every waiting event for the receiver; payloads are not freed. Returns how many.
  static int Delete(FCQueue* pQueue, const FCHandler* pReceiver);

 private:
  friend struct framework::TicketQueue;
  struct Impl;
  std::unique_ptr<Impl> m_pImpl;
};
