// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "common/timer.h"
#include "tv/callers.h"
#include "tv/router.h"
#include "tv/tv_log.h"

namespace desk::tv {

/// A daemon that was started.
struct DaemonProcess {
  pid_t pid = 0;           ///< of the sandbox around it, or of the daemon itself without one
  bool sandboxed = false;  ///< its end is told as the sandbox's exit status then
  int infoFd = -1;         ///< the sandbox tells the daemon's own pid there; owned by the taker
  std::string output;      ///< file that its standard error goes to
};

/// How long the supervisor waits. In milliseconds.
struct SupervisorTimes {
  unsigned stopGrace = 5000;    ///< from SIGTERM to SIGKILL
  unsigned quickDeath = 10000;  ///< a daemon that lived shorter counts against the next start
  unsigned firstDelay = 1000;   ///< before the second start in a row; doubled each time
  unsigned longestDelay = 30000;
  unsigned watchdogFloor = 10000;  ///< least time to be silent when the daemon's clock runs faster
  unsigned speed = 1;              ///< of the daemon's clock
};

/// Keeps the daemon running: starts it, learns when its main loop runs, restarts it when it dies or
/// falls silent, and stops it when asked. Methods daemon.* and watchdog.*, topic "daemon". Main
/// loop's thread only.
class Supervisor {
 public:
  /// Starts one daemon; throws DeskError.
  using Launcher = std::function<DaemonProcess()>;
  /// Gets an empty text for done, else why not.
  using Done = std::function<void(const std::string& failure)>;

  Supervisor(Router& router, CallerTable& callers, TvLog& log, Launcher launcher,
             SupervisorTimes times);
  /// Kills the daemon and waits for its end.
  ~Supervisor();
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;

  /// Done when the daemon is in its main loop; at once when it is already. Fails when this start's
  /// daemon dies before; it is tried again all the same until Stop.
  void Start(Done done);
  /// Done when it is gone.
  void Stop(Done done);

  /// `running`, `pid`, `restarts`, `state`, and `reason` of the last end, which stays while the
  /// next daemon runs.
  Json::Value Describe() const;

 private:
  enum class State { Exited, Starting, Ready, Stopping, Restarting };

  void AddMethods(Router& router);
  void Answer(const std::shared_ptr<Reply>& reply, const std::string& failure) const;
  void OnReady(const Caller& caller);
  void RegisterWatchdog(int seconds);
  void NotifyWatchdog();
  void ArmWatchdog();

  void Launch();
  void OnEnded(int status);
  void OnDiedUnasked();
  void Restart();
  void Kill(int signal);
  pid_t DaemonPid() const;
  bool IsRunning() const;
  std::string ReasonOf(int status) const;
  void SetState(State state);
  static void Tell(std::vector<Done>& waiting, const std::string& failure);

  CallerTable& m_callers;
  Router& m_router;
  TvLog& m_log;
  const Launcher m_launcher;
  const SupervisorTimes m_times;

  State m_state = State::Exited;
  DaemonProcess m_process;
  unsigned m_watch = 0;           ///< of the process; valid while there is one
  mutable pid_t m_daemonPid = 0;  ///< 0 until it is known
  mutable std::string m_info;     ///< what came from infoFd so far
  std::string m_reason;           ///< of the last end
  std::string m_silence;          ///< why the watchdog killed it; empty otherwise
  int m_restarts = 0;
  bool m_killAsked = false;    ///< the next end is one that an operator asked for
  unsigned m_quickDeaths = 0;  ///< in a row
  long m_startedAt = 0;        ///< milliseconds of the monotonic clock
  unsigned m_watchdogTime = 0;
  std::vector<Done> m_starting;
  std::vector<Done> m_stopping;
  Timer m_killTimer;
  Timer m_restartTimer;
  Timer m_watchdogTimer;
};

}  // namespace desk::tv
