// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "common/faults.h"

namespace desk {

/// One place of the fault table: an order and what is left of it, in memory that processes share.
/// All zeros is a place that is used up.
///
/// A place whose order is used up takes another one while calls are looking at it. So it says last
/// which order it holds, and its counters belong to one order: whoever read half of the old one and
/// half of the new one sees it, and counts nothing.
class FaultEntry {
 public:
  /// Orders are numbered from 1, in the order of their Add.
  using Order = std::uint32_t;

  static constexpr std::size_t NAME_BYTES = 96;
  using Name = std::array<char, NAME_BYTES>;  ///< with zeros behind the text
  static Name NameOf(const char* call);

  struct Snapshot {
    Order order = 0;  ///< 0 while the place is written
    Name name{};
    std::optional<int> result;
  };

  /// All of it of one order. Callable from any thread and process, as the next is.
  Snapshot Read() const;
  /// Counts one use against the order; true when that use is to fail. Without effect when the place
  /// has taken another order meanwhile.
  bool Fails(Order order);

  /// For one writer at a time.
  void Write(Order order, const Fault& fault);
  bool IsUsedUp() const;
  Order Holds() const { return m_order.load(); }
  /// after and times are what is left of them.
  Fault Describe() const;

 private:
  static constexpr std::size_t NAME_WORDS = NAME_BYTES / sizeof(std::uint64_t);

  std::atomic<Order> m_order;
  std::atomic<std::uint64_t> m_name[NAME_WORDS];
  std::atomic<std::int32_t> m_result;
  std::atomic<bool> m_hasResult;
  std::atomic<std::uint64_t> m_after;  ///< the order, and how many uses pass
  std::atomic<std::uint64_t> m_times;  ///< the order, and how many uses fail then
};

}  // namespace desk
