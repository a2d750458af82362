// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv up, tv down, tv status, tv power-cycle, tv daemon
#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <ostream>
#include <thread>

#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/cli/interrupt.h"
#include "desk/cli/launcher.h"
#include "desk/cli/session.h"
#include "desk/cli/status_view.h"
#include "desk/cli/table.h"
#include "desk/cli/tail.h"
#include "desk/common/desk_error.h"
#include "desk/common/desk_root.h"

namespace desk::cli {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double START_LIMIT = 120;  // seconds
constexpr std::chrono::seconds END_LIMIT(20);
constexpr std::chrono::milliseconds LOOK_AGAIN(20);
constexpr std::array<const char*, 3> START_SWITCHES = {"offline", "reset-clock", "no-sandbox"};
constexpr const char* STILL_STARTING =
    "tv: interrupted; the TV continues to start in the background: `tv status` shows how far it "
    "is, "
    "`tv down` stops it";

/// The state of a running TV, or null when there is none.
Json::Value StatusOrNull(Session& session) {
  try {
    return session.Call("tv.status");
  } catch (const DeskError& error) {
    if (error.Code() == DeskError::NO_TV) {
      return Json::Value();
    }
    throw;
  }
}

std::vector<std::string> TvArguments(const DeskPaths& paths, const Invocation& words) {
  std::vector<std::string> arguments = {"--root", paths.Root()};
  if (words.Has("speed")) {
    arguments.insert(arguments.end(),
                     {"--speed", std::to_string(words.Number("speed", 1, 1, 100000))});
  }
  for (const char* name : START_SWITCHES) {
    if (words.Has(name)) {
      arguments.push_back(std::string("--") + name);
    }
  }
  return arguments;
}

/// The time that a command waits for the daemon's main loop.
class StartLimit {
 public:
  explicit StartLimit(const Invocation& words)
      : m_seconds(words.Seconds("timeout", START_LIMIT)),
        m_end(Clock::now() + Milliseconds(m_seconds)) {}

  std::chrono::milliseconds Left() const {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(m_end - Clock::now());
    return std::max(left, std::chrono::milliseconds(0));
  }
  bool Over() const { return Left().count() == 0; }
  Failure Passed() const {
    return Failure(Exit::TimedOut, "the daemon is not in its main loop after " +
                                       SecondsText(m_seconds) +
                                       "; desk-tv keeps retrying: see `tv status` and `tv log`");
  }

 private:
  const double m_seconds;
  const Clock::time_point m_end;
};

/// Without a reason from desk-tv, the end of its log is the best one.
[[noreturn]] void FailStart(Session& session, const StartResult& result, Tail& log) {
  std::string reason = result.reason;
  if (reason.empty()) {
    const auto lines = log.Read();
    reason = "desk-tv ended without giving a reason; " +
             (lines.empty()
                  ? session.Paths().TvLog() + " has no line about it"
                  : "its last line in " + session.Paths().TvLog() + ": " + OneLine(lines.back()));
  }
  throw Failure(Exit::Failed, "the TV did not start: " + reason);
}

/// False for a daemon that was stopped on purpose: nothing will start it.
bool IsOnItsWay(const Json::Value& status) {
  const std::string state = status["daemon"]["state"].asString();
  return state == "starting" || state == "restarting" || state == "stopping";
}

/// Waits for a start by another command too: a TV is up when its daemon is in its main loop.
Json::Value WaitWhileStarting(Session& session, const StartLimit& limit, Json::Value status) {
  const InterruptNotice notice(STILL_STARTING);
  session.Tv().Subscribe("daemon", [](const Json::Value&) {});
  while (IsOnItsWay(status)) {
    if (limit.Over()) {
      throw limit.Passed();
    }
    session.Tv().Wait(std::min(limit.Left(), std::chrono::milliseconds(100)));
    status = session.Call("tv.status");
  }
  return status;
}

/// Status of the TV that another `tv up` has started or is starting now, or null. ours is the
/// desk-tv that failed; it may still be ending.
Json::Value StartedByAnother(Session& session, const StartLimit& limit, pid_t ours) {
  for (; !limit.Over(); std::this_thread::sleep_for(LOOK_AGAIN)) {
    std::ifstream file(session.Paths().PidFile());
    pid_t pid = 0;
    if (!(file >> pid) || pid == ours || kill(pid, 0) != 0) {
      return Json::Value();
    }
    Json::Value status = StatusOrNull(session);
    if (!status.isNull()) {
      return status;
    }
  }
  throw limit.Passed();
}

int AlreadyUp(Session& session, const Invocation& words, const StartLimit& limit,
              const Json::Value& found) {
  const Json::Value status = WaitWhileStarting(session, limit, found);
  session.Out() << "already up: " << session.Paths().Root() << ", pid " << status["pid"].asString();
  if (words.Has("speed") || std::any_of(START_SWITCHES.begin(), START_SWITCHES.end(),
                                        [&words](const char* name) { return words.Has(name); })) {
    session.Out() << "; its options stay as they are until `tv down`";
  }
  session.Out() << '\n';
  return 0;
}

int UpInBackground(Session& session, const Invocation& words, const StartLimit& limit,
                   const std::string& program, const std::vector<std::string>& arguments) {
  Tail log(session.Paths().TvLog());
  log.Read();
  const InterruptNotice notice(STILL_STARTING);
  const StartResult result = StartInBackground(session.Paths(), program, arguments, limit.Left());
  if (result.kind == StartResult::Kind::TimedOut) {
    throw limit.Passed();
  }
  if (result.kind == StartResult::Kind::Failed) {
    const Json::Value other = StartedByAnother(session, limit, result.pid);
    if (other.isNull()) {
      FailStart(session, result, log);
    }
    return AlreadyUp(session, words, limit, other);
  }
  session.Out() << "up: " << session.Paths().Root() << '\n';
  return 0;
}

int Up(Session& session, const Invocation& words) {
  RequireOwnDirectory(session.Paths());
  const StartLimit limit(words);
  const auto arguments = TvArguments(session.Paths(), words);
  const Json::Value status = StatusOrNull(session);
  if (!status.isNull()) {
    return AlreadyUp(session, words, limit, status);
  }
  PrepareDeskDirectory(session.Paths());
  const std::string program = FindDeskTv();
  if (words.Has("foreground")) {
    session.Out().flush();
    BecomeProgram(program, arguments);
  }
  return UpInBackground(session, words, limit, program, arguments);
}

int Down(Session& session, const Invocation&) {
  const auto pid = static_cast<pid_t>(session.Call("tv.status")["pid"].asInt());
  try {
    session.Call("tv.down");
  } catch (const DeskError& error) {
    // The bus may end before the reply is sent.
    if (error.Code() != DeskError::NO_TV) {
      throw;
    }
  }
  if (pid > 0 && !WaitForEnd(pid, END_LIMIT)) {
    throw Failure(Exit::TimedOut, "desk-tv (pid " + std::to_string(pid) +
                                      ") has not ended: kill it with `kill -9`; the next `tv up` "
                                      "removes what it leaves behind");
  }
  session.Out() << "down: " << session.Paths().Root() << '\n';
  return 0;
}

int Status(Session& session, const Invocation& words) {
  Json::Value status = session.Call("tv.status");
  AddBusy(status, session.Paths());
  if (words.Json()) {
    session.PrintJson(status);
  } else {
    session.Out() << StatusText(status, session.Paths());
  }
  return 0;
}

/// A command that is done when the daemon is in its main loop.
Run StartMethod(const std::string& method) {
  return [method](Session& session, const Invocation& words) {
    const StartLimit limit(words);
    try {
      session.Tv().CallWithin(limit.Left(), method, Json::Value(Json::objectValue));
    } catch (const DeskError& error) {
      if (error.Code() == DeskError::TIMEOUT) {
        throw limit.Passed();
      }
      throw;
    }
    return 0;
  };
}

Run DaemonMethod(const std::string& method) {
  return [method](Session& session, const Invocation&) {
    session.Call(method);
    return 0;
  };
}

}  // namespace

std::vector<Command> LifeCommands() {
  const Option timeout{"--timeout", "S",
                       "seconds to wait for the daemon's main loop (default: 120)"};
  return {
      {"up",
       "switch a TV on",
       {},
       {{"--speed", "N", "run the daemon's timers and clock N times faster"},
        {"--reset-clock", "", "set the TV's clock to this machine's time, even if it goes back"},
        {"--offline", "", "do not set the network time"},
        {"--foreground", "", "stay in the foreground, in place of this command"},
        {"--no-sandbox", "", "run the daemon without bubblewrap"},
        timeout},
       "Creates the desk's directory if needed. Only a new or an empty directory, or one that a TV "
       "has\nused before, is accepted. Returns when the daemon is in its main loop.",
       Up},
      {"down", "switch the TV off", {}, {}, "", Down},
      {"status", "state of the TV and its daemon", {}, {JsonOption()}, "", Status},
      {"power-cycle",
       "switch the TV off and on",
       {},
       {timeout},
       "Deletes the keys under memory/ and rtc/ and empties /tmp. Returns when the daemon is in "
       "its\n"
       "main loop again.",
       StartMethod("tv.power_cycle")},
      {"daemon stop",
       "stop the daemon, and do not restart it",
       {},
       {},
       "",
       DaemonMethod("daemon.stop")},
      {"daemon start",
       "start the daemon again",
       {},
       {timeout},
       "Returns when the daemon is in its main loop.",
       StartMethod("daemon.start")},
      {"daemon kill",
       "kill the daemon without warning, as a crash would",
       {},
       {},
       "",
       DaemonMethod("daemon.kill")},
      {"daemon restart",
       "stop the daemon and start it again",
       {},
       {timeout},
       "Returns when the daemon is in its main loop again.",
       StartMethod("daemon.restart")}};
}

}  // namespace desk::cli
