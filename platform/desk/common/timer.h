// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

namespace desk {

/// A one-shot timer of the default main context. Main loop's thread only. Destroying it stops it.
class Timer {
 public:
  Timer() = default;
  ~Timer() { Stop(); }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  /// Calls the function once, after the given time. Replaces the previous setting. The function may
  /// set, stop or destroy this timer.
  void Set(unsigned milliseconds, std::function<void()> function);
  /// Does nothing when the timer is not set.
  void Stop();
  bool IsSet() const { return m_source != 0; }

 private:
  unsigned m_source = 0;
};

}  // namespace desk
