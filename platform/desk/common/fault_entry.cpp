// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/fault_entry.h"

#include <cstring>

namespace desk {
namespace {

using Order = FaultEntry::Order;

constexpr std::uint32_t UNLIMITED = UINT32_MAX;

static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "shared between processes");

std::uint64_t Counter(Order order, std::uint32_t count) {
  return std::uint64_t{order} << 32U | count;
}
std::uint32_t CountOf(std::uint64_t counter) {
  return static_cast<std::uint32_t>(counter);
}
bool IsOf(std::uint64_t counter, Order order) {
  return counter >> 32U == order;
}

// Takes one from a counter that several threads count down; false when it was at zero already.
bool TakeOne(std::atomic<std::uint64_t>& counter, Order order) {
  std::uint64_t left = counter.load();
  while (IsOf(left, order) && CountOf(left) > 0) {
    if (counter.compare_exchange_weak(left, left - 1)) {
      return true;
    }
  }
  return false;
}

}  // namespace

FaultEntry::Name FaultEntry::NameOf(const char* call) {
  Name name{};
  std::strncpy(name.data(), call, name.size() - 1);
  return name;
}

FaultEntry::Snapshot FaultEntry::Read() const {
  Snapshot snapshot;
  const Order before = m_order.load();
  for (std::size_t i = 0; i < NAME_WORDS; ++i) {
    const std::uint64_t word = m_name[i].load();
    std::memcpy(snapshot.name.data() + i * sizeof(word), &word, sizeof(word));
  }
  if (m_hasResult.load()) {
    snapshot.result = m_result.load();
  }
  snapshot.order = m_order.load() == before ? before : 0;
  return snapshot;
}

bool FaultEntry::Fails(Order order) {
  if (TakeOne(m_after, order)) {
    return false;
  }
  return m_times.load() == Counter(order, UNLIMITED) || TakeOne(m_times, order);
}

void FaultEntry::Write(Order order, const Fault& fault) {
  m_order.store(0);
  const Name name = NameOf(fault.call.c_str());
  for (std::size_t i = 0; i < NAME_WORDS; ++i) {
    std::uint64_t word = 0;
    std::memcpy(&word, name.data() + i * sizeof(word), sizeof(word));
    m_name[i].store(word);
  }
  m_result.store(fault.result.value_or(0));
  m_hasResult.store(fault.result.has_value());
  const auto times = static_cast<std::uint32_t>(fault.times);
  m_after.store(Counter(order, static_cast<std::uint32_t>(fault.after)));
  m_times.store(Counter(order, times == 0 ? UNLIMITED : times));
  m_order.store(order);
}

bool FaultEntry::IsUsedUp() const {
  return CountOf(m_times.load()) == 0;
}

Fault FaultEntry::Describe() const {
  const Snapshot snapshot = Read();
  const std::uint32_t times = CountOf(m_times.load());
  Fault fault;
  fault.call = snapshot.name.data();
  fault.result = snapshot.result;
  fault.after = static_cast<int>(CountOf(m_after.load()));
  fault.times = times == UNLIMITED ? 0 : static_cast<int>(times);
  return fault;
}

}  // namespace desk
