// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace desk {

/// The objects behind a family of handles. A handle is a number in the shape of a pointer and is
/// never used again, so a stale one is refused instead of followed. Callable from any thread.
template <typename Handle, typename T>
class HandleTable {
 public:
  Handle Add(std::shared_ptr<T> object) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_objects[++m_last] = std::move(object);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is never followed
    return reinterpret_cast<Handle>(m_last);
  }

  /// Null for a handle that is not in the table.
  std::shared_ptr<T> Find(Handle handle) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_objects.find(reinterpret_cast<std::uintptr_t>(handle));
    return found == m_objects.end() ? nullptr : found->second;
  }

  /// As Find(), and the handle is in the table no more.
  std::shared_ptr<T> Take(Handle handle) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_objects.find(reinterpret_cast<std::uintptr_t>(handle));
    if (found == m_objects.end()) {
      return nullptr;
    }
    auto object = std::move(found->second);
    m_objects.erase(found);
    return object;
  }

  /// All objects, in the order of their Add().
  std::vector<std::shared_ptr<T>> All() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::shared_ptr<T>> all;
    for (const auto& entry : m_objects) {
      all.push_back(entry.second);
    }
    return all;
  }

 private:
  mutable std::mutex m_mutex;  // guards what follows
  std::uintptr_t m_last = 0;
  std::map<std::uintptr_t, std::shared_ptr<T>> m_objects;
};

}  // namespace desk
