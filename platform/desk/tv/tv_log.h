// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <string>

#include "desk/common/line_log.h"
#include "desk/common/timestamp.h"

namespace desk::tv {

/// What desk-tv itself did, one line each, stamped with the TV's clock, so that its lines can be
/// merged with the daemon's. Callable from any thread.
class TvLog {
 public:
  explicit TvLog(const std::string& path);

  /// The TV's clock: it showed `base` when the machine's clock showed `since`, and runs that many
  /// times faster. Until this is called it is the machine's clock. Call it before other threads use
  /// the log.
  void SetClock(Timestamp since, Timestamp base, int speed);

  /// The TV's clock.
  Timestamp Now() const;

  /// Also writes to standard error when that is a terminal.
  void Say(const std::string& text);

 private:
  LineLog m_file;
  const bool m_terminal;
  std::atomic<Timestamp::rep> m_since{0};
  std::atomic<Timestamp::rep> m_base{0};
  std::atomic<int> m_speed{1};
};

}  // namespace desk::tv
