// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>
#include <json/value.h>

#include <functional>
#include <mutex>
#include <set>

namespace desk::client {

/// The thread that delivers the TV's signals. It runs from the first Subscribe() until the process
/// ends. Signals that arrive before the main loop runs are delivered then.
class SignalThread {
 public:
  static SignalThread& Get();

  /// Calls the function, on the thread, for every event of the topic from now on. Throws DeskError.
  void Subscribe(const char* topic, std::function<void(const Json::Value& body)> function);

 private:
  SignalThread();

  GMainContext* const m_context;
};

/// The subscribed signal numbers. Callable from any thread.
class SignalSet {
 public:
  void Add(int signal);
  bool Contains(int signal) const;

 private:
  mutable std::mutex m_mutex;  // guards the following members
  std::set<int> m_signals;
};

}  // namespace desk::client
