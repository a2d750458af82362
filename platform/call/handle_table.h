// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "call/value.h"

namespace platform {

/// The objects behind one kind of handle. A handle is a number from 1 in the type of a pointer. It
/// is never followed and never used twice, so a stale handle is refused. Callable from any thread.
template <typename Handle, typename T>
class HandleTable {
 public:
  /// Notified of each change of the number of open handles, outside the lock.
  using Counter = void (*)(const char* kind, int change);

  /// The kind ("app_control") is a literal.
  explicit HandleTable(const char* kind, Counter counter = nullptr)
      : m_kind(kind), m_counter(counter) {}

  Handle Add(std::shared_ptr<T> object) {
    std::uintptr_t number = 0;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      number = ++m_last;
      m_objects[number] = std::move(object);
    }
    Count(1);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is never followed
    return reinterpret_cast<Handle>(number);
  }

  /// Null for a handle that is not open.
  std::shared_ptr<T> Find(Handle handle) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_objects.find(ToNumber(handle));
    return found == m_objects.end() ? nullptr : found->second;
  }

  /// As Find(), and closes the handle.
  std::shared_ptr<T> Take(Handle handle) {
    std::shared_ptr<T> object;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      const auto found = m_objects.find(ToNumber(handle));
      if (found == m_objects.end()) {
        return nullptr;
      }
      object = std::move(found->second);
      m_objects.erase(found);
    }
    Count(-1);
    return object;
  }

  /// The objects of all open handles, in the order of their Add().
  std::vector<std::shared_ptr<T>> All() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::shared_ptr<T>> all;
    for (const auto& entry : m_objects) {
      all.push_back(entry.second);
    }
    return all;
  }

  /// Closes all handles without a notification and numbers the next ones from 1 again.
  void Clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_objects.clear();
    m_last = 0;
  }

  /// For the record of a call. The handle need not be open.
  Value Describe(Handle handle) const { return Value::OfHandle(m_kind, ToNumber(handle)); }

 private:
  static std::uintptr_t ToNumber(Handle handle) { return reinterpret_cast<std::uintptr_t>(handle); }

  void Count(int change) {
    if (m_counter != nullptr) {
      m_counter(m_kind, change);
    }
  }

  const char* const m_kind;
  const Counter m_counter;
  mutable std::mutex m_mutex;
  // Guarded by m_mutex.
  std::uintptr_t m_last = 0;
  std::map<std::uintptr_t, std::shared_ptr<T>> m_objects;
};

}  // namespace platform
