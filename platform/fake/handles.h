// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace fake {

/// Counts a kind of handle for OpenHandles().
void CountHandle(const std::string& kind, int change);

/// The handles of one kind. T has a member `number`. A handle that is not known, or no more, is
/// found out without being looked into; one that nobody destroys belongs to the table.
template <typename T>
class Handles {
 public:
  explicit Handles(std::string kind) : m_kind(std::move(kind)) {}

  T* Add(std::shared_ptr<T> object) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    object->number = ++m_last;
    T* handle = object.get();
    m_objects[handle] = std::move(object);
    CountHandle(m_kind, 1);
    return handle;
  }

  /// Null for an unknown handle.
  std::shared_ptr<T> Find(const T* handle) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_objects.find(const_cast<T*>(handle));
    return found == m_objects.end() ? nullptr : found->second;
  }

  bool Remove(T* handle) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_objects.erase(handle) == 0) {
      return false;
    }
    CountHandle(m_kind, -1);
    return true;
  }

  /// "app_control#1"
  std::string TextOf(const T* handle) const {
    if (handle == nullptr) {
      return "null";
    }
    const auto object = Find(handle);
    return m_kind + "#" + (object ? std::to_string(object->number) : "?");
  }

  void Clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_objects.clear();
    m_last = 0;
  }

  template <typename Function>
  void ForEach(Function function) const {
    std::map<unsigned long, std::shared_ptr<T>> objects;
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      for (const auto& [handle, object] : m_objects) {
        objects[object->number] = object;
      }
    }
    for (const auto& [number, object] : objects) {
      function(*object);
    }
  }

 private:
  const std::string m_kind;
  mutable std::mutex m_mutex;
  // Guarded by m_mutex.
  std::map<T*, std::shared_ptr<T>> m_objects;
  unsigned long m_last = 0;
};

}  // namespace fake
