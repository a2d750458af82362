// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "FCQueue.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <new>
#include <utility>

#include "framework/sync_ticket.h"

namespace {

struct Slot {
  FSEvent event;
  framework::SyncTicket* ticket = nullptr;
};

constexpr std::size_t FIRST_SLOTS = 64;

void Drop(const Slot& slot) {
  if (slot.ticket != nullptr) {
    slot.ticket->Finish(false);
  }
}

}  // namespace

/// A ring that doubles up to the capacity: a quiet task uses little memory, and an event needs no
/// allocation of its own.
struct FCQueue::Impl {
  explicit Impl(std::size_t limit) : capacity(limit) {}

  Slot& At(std::size_t index) { return ring[(head + index) & mask]; }

  void Grow() {
    const std::size_t size = std::max(FIRST_SLOTS, count * 2);
    auto larger = std::make_unique<Slot[]>(size);
    for (std::size_t i = 0; i < count; ++i) {
      larger[i] = At(i);
    }
    ring = std::move(larger);
    mask = size - 1;
    head = 0;
  }

  bool Store(const FSEvent& rEvent, bool bUrgent, framework::SyncTicket* ticket) {
    if (closed || count == capacity) {
      return false;
    }
    if (ring == nullptr || count > mask) {
      Grow();
    }
    if (bUrgent) {
      head = (head - 1) & mask;
    }
    Slot& slot = At(bUrgent ? 0 : count);
    slot.event = rEvent;
    slot.ticket = ticket;
    ++count;
    return true;
  }

  bool Push(const FSEvent& rEvent, bool bUrgent, framework::SyncTicket* ticket);
  bool Pop(FSEvent& rEvent, framework::SyncTicket*& ticket);

  const std::size_t capacity;
  std::mutex mutex;
  std::condition_variable filled;
  // Guarded by mutex.
  std::unique_ptr<Slot[]> ring;  // null until the first event; then a power of two of slots
  std::size_t mask = 0;          // slots - 1
  std::size_t head = 0;
  std::size_t count = 0;
  int sleepers = 0;
  bool closed = false;
};

FCQueue::FCQueue(std::size_t capacity) : m_pImpl(std::make_unique<Impl>(capacity)) {}

FCQueue::~FCQueue() {
  Close();
}

bool FCQueue::Impl::Push(const FSEvent& rEvent, bool bUrgent, framework::SyncTicket* ticket) {
  bool asleep = false;
  try {
    const std::lock_guard<std::mutex> lock(mutex);
    if (!Store(rEvent, bUrgent, ticket)) {
      return false;
    }
    asleep = sleepers > 0;
  } catch (const std::bad_alloc&) {
    return false;
  }
  if (asleep) {
    filled.notify_one();
  }
  return true;
}

bool FCQueue::Impl::Pop(FSEvent& rEvent, framework::SyncTicket*& ticket) {
  std::unique_lock<std::mutex> lock(mutex);
  while (count == 0 && !closed) {
    ++sleepers;
    filled.wait(lock);
    --sleepers;
  }
  if (closed) {
    return false;
  }
  const Slot& slot = At(0);
  rEvent = slot.event;
  ticket = slot.ticket;
  head = (head + 1) & mask;
  --count;
  return true;
}

bool FCQueue::Push(const FSEvent& rEvent, bool bUrgent) {
  return m_pImpl->Push(rEvent, bUrgent, nullptr);
}

bool FCQueue::Pop(FSEvent& rEvent) {
  framework::SyncTicket* ticket = nullptr;
  const bool popped = m_pImpl->Pop(rEvent, ticket);
  if (ticket != nullptr) {
    ticket->Finish(true);
  }
  return popped;
}

namespace framework {

bool TicketQueue::PushAndWait(FCQueue& queue, const FSEvent& rEvent, bool bUrgent) {
  SyncTicket ticket;
  return queue.m_pImpl->Push(rEvent, bUrgent, &ticket) && ticket.Wait();
}

bool TicketQueue::Pop(FCQueue& queue, FSEvent& rEvent, SyncTicket*& ticket) {
  return queue.m_pImpl->Pop(rEvent, ticket);
}

}  // namespace framework

void FCQueue::Close() {
  const std::lock_guard<std::mutex> lock(m_pImpl->mutex);
  m_pImpl->closed = true;
  // No thread can pop these events any more: release the senders that wait for them.
  for (std::size_t i = 0; i < m_pImpl->count; ++i) {
    Drop(m_pImpl->At(i));
  }
  m_pImpl->count = 0;
  m_pImpl->filled.notify_all();
}

long FCQueue::Size() const {
  const std::lock_guard<std::mutex> lock(m_pImpl->mutex);
  return static_cast<long>(m_pImpl->count);
}

int FCQueue::Delete(FCQueue* pQueue, const FCHandler* pReceiver) {
  if (pQueue == nullptr) {
    return 0;
  }
  Impl& impl = *pQueue->m_pImpl;
  const std::lock_guard<std::mutex> lock(impl.mutex);
  std::size_t kept = 0;
  for (std::size_t i = 0; i < impl.count; ++i) {
    if (impl.At(i).event.pReceiver == pReceiver) {
      Drop(impl.At(i));
    } else {
      impl.At(kept++) = impl.At(i);
    }
  }
  const std::size_t dropped = impl.count - kept;
  impl.count = kept;
  return static_cast<int>(dropped);
}
