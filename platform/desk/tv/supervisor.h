// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "desk/common/timer.h"
#include "desk/tv/callers.h"
#include "desk/tv/router.h"
#include "desk/tv/tv_log.h"

namespace desk::tv {

/// A started daemon process.
struct DaemonProcess {
  pid_t pid = 0;           ///< of the sandbox, or of the daemon when there is no sandbox
  bool sandboxed = false;  ///< then the exit status is the sandbox's
  int infoFd = -1;         ///< the sandbox writes the daemon's pid there; the receiver closes it
  std::string output;      ///< file with its standard output and error
};

/// Times of the supervisor, in milliseconds.
struct SupervisorTimes {
  unsigned stopGrace = 5000;    ///< from SIGTERM to SIGKILL
  unsigned quickDeath = 10000;  ///< a shorter life delays the next start
  unsigned firstDelay = 1000;   ///< before the second restart in a row; doubled each time
  unsigned longestDelay = 30000;
  unsigned watchdogFloor =
      10000;           ///< minimum of the watchdog's time when the daemon's clock runs faster
  unsigned speed = 1;  ///< of the daemon's clock
};

/// Keeps the daemon running: starts it, notices when its main loop runs, restarts it when it dies
/// or when its watchdog expires, and stops it on request. Methods daemon.* and watchdog.*, topic
/// "daemon". Main loop's thread only.
class Supervisor {
 public:
  /// Starts one daemon; throws DeskError.
  using Launcher = std::function<DaemonProcess()>;
  /// Called with an empty text for success, else with the reason of the failure.
  using Done = std::function<void(const std::string& failure)>;

  Supervisor(Router& router, CallerTable& callers, TvLog& log, Launcher launcher,
             SupervisorTimes times);
  /// Kills the daemon and waits until it has ended.
  ~Supervisor();
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;

  /// Calls done when the daemon is in its main loop; at once when it already is. Calls it with the
  /// reason when the daemon dies before that; the supervisor still retries until Stop.
  void Start(Done done);
  /// Calls done when the daemon has ended.
  void Stop(Done done);

  /// `running`, `pid`, `restarts`, `state`, and `reason` of the last end, which is kept while the
  /// next daemon runs.
  Json::Value Describe();

 private:
  enum class State { Exited, Starting, Ready, Stopping, Restarting };

  void AddMethods(Router& router);
  void Answer(const std::shared_ptr<Reply>& reply, const std::string& failure);
  void OnReady(const Caller& caller);
  void RegisterWatchdog(int seconds);
  void NotifyWatchdog();
  void ArmWatchdog();

  void Launch();
  void OnEnded(int status);
  void OnDiedUnasked();
  void Restart();
  void Kill(int signal);
  /// 0 until the sandbox has written it; reads what it wrote.
  pid_t DaemonPid();
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
  unsigned m_watch = 0;   ///< of m_process; valid while it runs
  pid_t m_daemonPid = 0;  ///< 0 until it is known
  std::string m_info;     ///< read from infoFd so far
  std::string m_reason;   ///< of the last end
  std::string m_silence;  ///< why the watchdog killed it; empty otherwise
  int m_restarts = 0;
  bool m_killAsked = false;    ///< an operator asked for the next end
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
