// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>
#include <json/value.h>

#include <functional>
#include <mutex>
#include <set>

namespace desk {

/// The thread that the TV's signals are delivered on. It runs from the first Subscribe() until the
/// process ends, and delivers nothing before the main loop runs; what comes earlier waits.
class SignalThread {
 public:
  static SignalThread& Get();

  /// Calls the function, on the thread, for every event of the topic from now on. Throws DeskError.
  void Subscribe(const char* topic, std::function<void(const Json::Value& body)> function);

 private:
  SignalThread();

  GMainContext* const m_context;
};

/// The signal numbers that somebody wants. Callable from any thread.
class SignalSet {
 public:
  void Add(int signal);
  bool Contains(int signal) const;

 private:
  mutable std::mutex m_mutex;  // guards what follows
  std::set<int> m_signals;
};

}  // namespace desk
