// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "desk/common/timer.h"

namespace desk::tv {

/// The TV's time of day: from the construction of this object on it runs `speed` times faster than
/// the machine's clock. It is stored in a file whenever it differs from the machine's clock, so
/// that it never goes back: the next TV in the same directory continues where this one ended, plus
/// the time that the TV was off. Times are since 1970. Main loop's thread only.
class TvClock {
 public:
  using Time = std::chrono::nanoseconds;
  using MachineClock = std::function<Time()>;

  /// reset discards the stored time, and the TV's clock starts at the machine's. Throws DeskError
  /// (Failed) when the file cannot be written.
  TvClock(std::string file, int speed, bool reset, MachineClock machine = MachineNow);
  /// Stores the time. Errors are ignored: the time stored last is then slightly behind, and the
  /// next TV adds a margin for that.
  ~TvClock();
  TvClock(const TvClock&) = delete;
  TvClock& operator=(const TvClock&) = delete;

  static Time MachineNow();

  /// The machine's time at the construction, and what the TV's clock showed then.
  Time Since() const { return m_since; }
  Time Base() const { return m_base; }
  Time Now() const;
  /// False when the TV's clock is the machine's.
  bool Differs() const { return m_speed > 1 || m_base != m_since; }

 private:
  void Store(bool running) const;
  void StoreRegularly();

  const std::string m_file;
  const int m_speed;
  const MachineClock m_machine;
  const Time m_since;
  Time m_base;
  Timer m_timer;
};

}  // namespace desk::tv
