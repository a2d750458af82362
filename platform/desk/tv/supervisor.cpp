// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/supervisor.h"

#include <glib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fstream>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"
#include "desk/tv/process.h"

namespace desk::tv {
namespace {

long Now() {
  return static_cast<long>(g_get_monotonic_time() / 1000);
}

std::string LastLine(const std::string& path) {
  std::ifstream file(path);
  std::string last;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty()) {
      last = line;
    }
  }
  return last;
}

// What an operator reads about a daemon that ended before its main loop ran. lastLine is the last
// line of its output.
std::string EarlyEnd(const std::string& reason, const std::string& lastLine) {
  if (lastLine.rfind("bwrap: ", 0) == 0) {
    return "the daemon's sandbox cannot be set up here (" + lastLine +
           "); allow user namespaces, or run the daemon without a sandbox with `tv up "
           "--no-sandbox`";
  }
  return "the daemon ended before its main loop ran (" + reason + ")" +
         (lastLine.empty() ? "" : ", its last output: " + lastLine) + "; see `tv log`";
}

void RequireDaemon(const Caller& caller, const char* method) {
  if (caller.kind != Caller::Kind::Daemon) {
    throw DeskError(DeskError::USAGE, "only the daemon may call " + std::string(method));
  }
}

}  // namespace

Supervisor::Supervisor(Router& router, CallerTable& callers, TvLog& log, Launcher launcher,
                       SupervisorTimes times)
    : m_callers(callers),
      m_router(router),
      m_log(log),
      m_launcher(std::move(launcher)),
      m_times(times) {
  AddMethods(router);
}

Supervisor::~Supervisor() {
  if (m_process.pid > 0) {
    UnwatchProcess(m_watch);
    Kill(SIGKILL);
    waitpid(m_process.pid, nullptr, 0);
  }
  if (m_process.infoFd >= 0) {
    close(m_process.infoFd);
  }
}

void Supervisor::AddMethods(Router& router) {
  router.Add("daemon.ready", [this](const Json::Value&, const Caller& caller) {
    OnReady(caller);
    return Json::Value();
  });
  router.AddDeferred("daemon.start", [this](const Json::Value&, const Caller&,
                                            const std::shared_ptr<Reply>& reply) {
    Start([this, reply](const std::string& failure) { Answer(reply, failure); });
  });
  router.AddDeferred("daemon.stop", [this](const Json::Value&, const Caller&,
                                           const std::shared_ptr<Reply>& reply) {
    Stop([this, reply](const std::string& failure) { Answer(reply, failure); });
  });
  router.AddDeferred("daemon.restart", [this](const Json::Value&, const Caller&,
                                              const std::shared_ptr<Reply>& reply) {
    Stop([this, reply](const std::string&) {
      Start([this, reply](const std::string& failure) { Answer(reply, failure); });
    });
  });
  router.Add("daemon.kill", [this](const Json::Value&, const Caller&) {
    if (!IsRunning()) {
      throw DeskError(DeskError::NOT_FOUND,
                      "no daemon is running: start it with `tv daemon start`");
    }
    Json::Value reply;
    reply["pid"] = DaemonPid();
    // A requested crash must not delay the next start.
    m_killAsked = true;
    Kill(SIGKILL);
    return reply;
  });
  router.Add("watchdog.register", [this](const Json::Value& request, const Caller& caller) {
    RequireDaemon(caller, "watchdog.register");
    RegisterWatchdog(OptionalInt(request, "seconds", 0));
    return Json::Value();
  });
  router.Add("watchdog.notify", [this](const Json::Value&, const Caller& caller) {
    RequireDaemon(caller, "watchdog.notify");
    NotifyWatchdog();
    return Json::Value();
  });
}

void Supervisor::Answer(const std::shared_ptr<Reply>& reply, const std::string& failure) {
  if (!failure.empty()) {
    reply->Fail(DeskError::FAILED, failure);
    return;
  }
  Json::Value answer(Json::objectValue);
  if (IsRunning()) {
    answer["pid"] = DaemonPid();
  }
  reply->Return(answer);
}

void Supervisor::Start(Done done) {
  if (m_state == State::Ready) {
    done("");
    return;
  }
  m_starting.push_back(std::move(done));
  if (m_state == State::Exited || m_state == State::Restarting) {
    m_restartTimer.Stop();
    Launch();
  }
}

void Supervisor::Stop(Done done) {
  m_restartTimer.Stop();
  m_quickDeaths = 0;
  if (m_state == State::Exited || m_state == State::Restarting) {
    SetState(State::Exited);
    done("");
    return;
  }
  m_stopping.push_back(std::move(done));
  if (m_state == State::Stopping) {
    return;
  }
  m_state = State::Stopping;
  Tell(m_starting, "the daemon was stopped before it was ready");
  Kill(SIGTERM);
  m_killTimer.Set(m_times.stopGrace, [this] { Kill(SIGKILL); });
}

void Supervisor::Launch() {
  m_silence.clear();
  m_info.clear();
  m_daemonPid = 0;
  try {
    m_process = m_launcher();
  } catch (const DeskError& e) {
    m_process = DaemonProcess();
    m_reason = e.what();
    SetState(State::Exited);
    m_log.Say("the daemon did not start: " + m_reason);
    Tell(m_starting, m_reason);
    return;
  }
  m_startedAt = Now();
  m_callers.AddDaemon(m_process.pid);
  m_watch = WatchProcess(m_process.pid, [this](int status) { OnEnded(status); });
  SetState(State::Starting);
}

void Supervisor::OnReady(const Caller& caller) {
  RequireDaemon(caller, "daemon.ready");
  if (m_state != State::Starting) {
    return;
  }
  SetState(State::Ready);
  m_log.Say("the daemon is in its main loop, pid " + std::to_string(DaemonPid()));
  Tell(m_starting, "");
}

void Supervisor::OnEnded(int status) {
  m_callers.Remove(m_process.pid);
  m_killTimer.Stop();
  m_watchdogTimer.Stop();
  m_reason = m_silence.empty() ? ReasonOf(status) : m_silence;
  const bool asked = m_state == State::Stopping;
  const bool early = m_state == State::Starting;
  if (m_process.infoFd >= 0) {
    close(m_process.infoFd);
  }
  const std::string output = m_process.output;
  m_process = DaemonProcess();
  m_daemonPid = 0;
  m_log.Say((asked ? "the daemon was stopped: " : "the daemon died: ") + m_reason);
  SetState(State::Exited);
  if (asked) {
    Tell(m_stopping, "");
    if (!m_starting.empty() && m_state == State::Exited) {
      Launch();
    }
    return;
  }
  // Schedule the restart before notifying: a listener may call Stop().
  OnDiedUnasked();
  if (early) {
    const std::string said = output.empty() ? "" : LastLine(output);
    Tell(m_starting, EarlyEnd(m_reason, said));
  }
}

void Supervisor::OnDiedUnasked() {
  const bool quick = !m_killAsked && Now() - m_startedAt < static_cast<long>(m_times.quickDeath);
  m_killAsked = false;
  m_quickDeaths = quick ? m_quickDeaths + 1 : 0;
  // Restart at once after one death; with growing delays when the daemon keeps dying.
  unsigned delay = 0;
  for (unsigned i = 1; i < m_quickDeaths && delay < m_times.longestDelay; ++i) {
    delay = delay == 0 ? m_times.firstDelay : delay * 2;
  }
  delay = std::min(delay, m_times.longestDelay);
  if (delay > 0) {
    m_log.Say("the daemon died " + std::to_string(m_quickDeaths) +
              " times in a row soon after its start: the next start is in " +
              std::to_string(delay) + " ms");
  }
  SetState(State::Restarting);
  m_restartTimer.Set(delay, [this] { Restart(); });
}

void Supervisor::Restart() {
  ++m_restarts;
  Launch();
}

void Supervisor::RegisterWatchdog(int seconds) {
  if (seconds <= 0) {
    throw DeskError(DeskError::USAGE, "the watchdog needs a number of seconds above 0");
  }
  const unsigned real = static_cast<unsigned>(std::min(seconds, 86400)) * 1000U;
  const unsigned scaled = real / m_times.speed;
  m_watchdogTime =
      m_times.speed == 1 ? real : std::max(scaled, std::min(real, m_times.watchdogFloor));
  ArmWatchdog();
}

void Supervisor::NotifyWatchdog() {
  if (m_watchdogTimer.IsSet()) {
    ArmWatchdog();
  }
}

void Supervisor::ArmWatchdog() {
  m_watchdogTimer.Set(m_watchdogTime, [this] {
    m_silence = "killed by the watchdog after " + std::to_string(m_watchdogTime) + " ms of silence";
    Kill(SIGKILL);
  });
}

void Supervisor::Kill(int signal) {
  if (m_process.pid <= 0) {
    return;
  }
  const pid_t daemon = DaemonPid();
  if (daemon <= 0 || kill(daemon, signal) != 0) {
    // The daemon's own pid is unknown: kill its sandbox, and the daemon with it.
    kill(m_process.pid, SIGKILL);
  }
}

pid_t Supervisor::DaemonPid() {
  if (m_daemonPid != 0 || m_process.pid == 0) {
    return m_daemonPid;
  }
  if (!m_process.sandboxed) {
    return m_process.pid;
  }
  char buffer[512];
  for (ssize_t got = 0; (got = read(m_process.infoFd, buffer, sizeof(buffer))) > 0;) {
    m_info.append(buffer, static_cast<std::size_t>(got));
  }
  try {
    const Json::Value info = ParseJson(m_info);
    m_daemonPid = info.isObject() ? info.get("child-pid", 0).asInt() : 0;
  } catch (const std::exception&) {
    // The sandbox is still being set up, and has written nothing or only a part.
  }
  return m_daemonPid;
}

bool Supervisor::IsRunning() const {
  return m_process.pid > 0;
}

std::string Supervisor::ReasonOf(int status) const {
  // The sandbox reports a fatal signal as a shell does: 128 plus its number.
  constexpr int SIGNAL_BASE = 128;
  const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
  if (m_process.sandboxed && code > SIGNAL_BASE && code < SIGNAL_BASE + NSIG) {
    return "signal " + std::to_string(code - SIGNAL_BASE) + " (" + strsignal(code - SIGNAL_BASE) +
           ")";
  }
  return DescribeStatus(status);
}

void Supervisor::SetState(State state) {
  m_state = state;
  if (state == State::Stopping) {
    return;
  }
  Json::Value body = Describe();
  m_router.Emit("daemon", body);
}

Json::Value Supervisor::Describe() {
  static constexpr const char* NAMES[] = {"exited", "starting", "ready", "stopping", "restarting"};
  Json::Value daemon;
  daemon["running"] = IsRunning();
  daemon["pid"] = DaemonPid();
  daemon["restarts"] = m_restarts;
  daemon["state"] = NAMES[static_cast<int>(m_state)];
  daemon["reason"] = m_reason;
  return daemon;
}

void Supervisor::Tell(std::vector<Done>& waiting, const std::string& failure) {
  std::vector<Done> told;
  told.swap(waiting);
  for (const Done& done : told) {
    done(failure);
  }
}

}  // namespace desk::tv
