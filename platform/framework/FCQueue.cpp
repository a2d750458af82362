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

thread_local framework::SyncTicket* t_ticketToPush = nullptr;
thread_local framework::SyncTicket* t_poppedTicket = nullptr;

struct Slot {
  FSEvent event;
  framework::SyncTicket* ticket = nullptr;
};

constexpr std::size_t kFirstSlots = 64;

void Drop(const Slot& slot) {
  if (slot.ticket != nullptr) {
    slot.ticket->Finish(false);
  }
}

}  // namespace

namespace framework {

void SetTicketToPush(SyncTicket* ticket) {
  t_ticketToPush = ticket;
}

SyncTicket* GetPoppedTicket() {
  return t_poppedTicket;
}

}  // namespace framework

/// A ring that doubles until it holds the capacity: a quiet task keeps a few cache lines, and no
/// event costs an allocation of its own.
struct FCQueue::Impl {
  explicit Impl(std::size_t limit) : capacity(limit) {}

  Slot& At(std::size_t index) { return ring[(head + index) & mask]; }

  void Grow() {
    const std::size_t size = std::max(kFirstSlots, count * 2);
    auto larger = std::make_unique<Slot[]>(size);
    for (std::size_t i = 0; i < count; ++i) {
      larger[i] = At(i);
    }
    ring = std::move(larger);
    mask = size - 1;
    head = 0;
  }

  bool Store(const FSEvent& rEvent, bool bUrgent) {
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
    slot.ticket = t_ticketToPush;
    ++count;
    return true;
  }

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

bool FCQueue::Push(const FSEvent& rEvent, bool bUrgent) {
  bool asleep = false;
  try {
    const std::lock_guard<std::mutex> lock(m_pImpl->mutex);
    if (!m_pImpl->Store(rEvent, bUrgent)) {
      return false;
    }
    asleep = m_pImpl->sleepers > 0;
  } catch (const std::bad_alloc&) {
    return false;
  }
  if (asleep) {
    m_pImpl->filled.notify_one();
  }
  return true;
}

bool FCQueue::Pop(FSEvent& rEvent) {
  std::unique_lock<std::mutex> lock(m_pImpl->mutex);
  while (m_pImpl->count == 0 && !m_pImpl->closed) {
    ++m_pImpl->sleepers;
    m_pImpl->filled.wait(lock);
    --m_pImpl->sleepers;
  }
  if (m_pImpl->closed) {
    return false;
  }
  const Slot& slot = m_pImpl->At(0);
  rEvent = slot.event;
  t_poppedTicket = slot.ticket;
  m_pImpl->head = (m_pImpl->head + 1) & m_pImpl->mask;
  --m_pImpl->count;
  return true;
}

void FCQueue::Close() {
  const std::lock_guard<std::mutex> lock(m_pImpl->mutex);
  m_pImpl->closed = true;
  // Nobody can pop them any more; who waits for one must not wait for ever.
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
  const std::size_t gone = impl.count - kept;
  impl.count = kept;
  return static_cast<int>(gone);
}
