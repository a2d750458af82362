// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

namespace desk::tv {

/// A timer of the main loop that calls its function once, unless it is set anew or stopped. Main
/// loop's thread only; ends with its object.
class Timer {
 public:
  Timer() = default;
  ~Timer() { Stop(); }
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;

  /// Replaces what was set before. The function may set or stop this timer, but not destroy it.
  void Set(unsigned milliseconds, std::function<void()> function);
  void Stop();
  bool IsSet() const { return m_source != 0; }

 private:
  static int Fire(void* self);

  unsigned m_source = 0;
  std::function<void()> m_function;
};

}  // namespace desk::tv
