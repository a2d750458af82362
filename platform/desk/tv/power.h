// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "desk/common/paths.h"
#include "desk/common/timer.h"
#include "desk/tv/router.h"
#include "desk/tv/services/keys.h"
#include "desk/tv/supervisor.h"
#include "desk/tv/tv_log.h"

namespace desk::tv {

/// What the TV's parts do at power-off and at power-on. Run in the given order on the main loop's
/// thread. Must not throw.
struct PowerHooks {
  std::vector<std::function<void()>> off;
  std::vector<std::function<void()>> on;
};

/// The TV's power switch, its network time and its resets. Methods tv.power_cycle, tv.down and
/// reset. Main loop's thread only.
class Power {
 public:
  using Done = Supervisor::Done;

  /// quit ends the main loop; it is called after tv.down has switched everything off.
  Power(Router& router, const DeskPaths& paths, Keys& keys, Supervisor& supervisor, TvLog& log,
        bool offline, PowerHooks hooks, std::function<void()> quit);

  /// Calls done when the daemon is in its main loop, or with the reason why it is not.
  void TurnOn(Done done);
  /// Stops the daemon and all apps, calls done, then quits. A second call waits for the first.
  void GoDown(std::function<void()> done);

 private:
  void TurnOff(std::function<void()> done);
  void Cycle(const std::shared_ptr<Reply>& reply);
  void Reset(const std::string& kind);

  const DeskPaths m_paths;
  Keys& m_keys;
  Supervisor& m_supervisor;
  TvLog& m_log;
  const bool m_offline;
  const PowerHooks m_hooks;
  const std::function<void()> m_quit;
  bool m_changing = false;
  std::vector<std::function<void()>> m_goingDown;
  Timer m_networkTime;
};

}  // namespace desk::tv
