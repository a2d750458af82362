// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv up, tv down, tv status, tv power-cycle, tv daemon
#include <algorithm>
#include <cmath>
#include <csignal>
#include <fstream>
#include <ostream>
#include <thread>

#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/launcher.h"
#include "cli/session.h"
#include "cli/table.h"
#include "cli/tail.h"
#include "common/desk_error.h"
#include "common/json.h"

namespace desk {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double START_LIMIT = 120;  // seconds
constexpr std::chrono::seconds END_LIMIT(20);
constexpr std::chrono::milliseconds LOOK_AGAIN(20);
constexpr size_t SHOWN_LOG_LINES = 8;

/// The state of a running TV, or null when there is none.
Json::Value StatusOrNull(Session& session) {
  try {
    return session.Call("tv.status");
  } catch (const DeskError& error) {
    if (error.Code() == DeskError::NoTv) {
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
  for (const char* name : {"offline", "no-sandbox"}) {
    if (words.Has(name)) {
      arguments.push_back(std::string("--") + name);
    }
  }
  return arguments;
}

/// How long a command waits for the daemon's main loop.
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
                                       ", and the TV goes on trying: `tv status` and `tv log` tell "
                                       "how it gets on");
  }

 private:
  const double m_seconds;
  const Clock::time_point m_end;
};

/// Prints what desk-tv left in its log when it ended without a word.
[[noreturn]] void TellFailedStart(Session& session, const StartResult& result, Tail& log) {
  if (!result.reason.empty()) {
    throw Failure(Exit::Failed, "the TV did not start: " + result.reason);
  }
  auto lines = log.Read();
  const size_t first = lines.size() - std::min(lines.size(), SHOWN_LOG_LINES);
  for (size_t i = first; i < lines.size(); ++i) {
    session.Err() << "  " << OneLine(lines[i]) << '\n';
  }
  throw Failure(Exit::Failed, "the TV did not start: " + session.Paths().TvLog() + " tells why");
}

/// A daemon that was ended on purpose is not awaited.
bool IsOnItsWay(const Json::Value& status) {
  const std::string state = status["daemon"]["state"].asString();
  return state == "starting" || state == "restarting" || state == "stopping";
}

/// Somebody else's start is awaited too: up means that the daemon is in its main loop.
Json::Value WaitWhileStarting(Session& session, const StartLimit& limit, Json::Value status) {
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

/// The TV that another `tv up` has started or is starting in this very moment, or null. ours is the
/// desk-tv that failed, which may take a moment to end.
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
  if (words.Has("speed") || words.Has("offline") || words.Has("no-sandbox")) {
    session.Out() << "; its options stay as they are until `tv down`";
  }
  session.Out() << '\n';
  return 0;
}

int UpInBackground(Session& session, const Invocation& words, const StartLimit& limit,
                   const std::string& program, const std::vector<std::string>& arguments) {
  Tail log(session.Paths().TvLog());
  log.Read();
  const StartResult result = StartInBackground(session.Paths(), program, arguments, limit.Left());
  if (result.kind == StartResult::Kind::TimedOut) {
    throw limit.Passed();
  }
  if (result.kind == StartResult::Kind::Failed) {
    const Json::Value other = StartedByAnother(session, limit, result.pid);
    if (other.isNull()) {
      TellFailedStart(session, result, log);
    }
    return AlreadyUp(session, words, limit, other);
  }
  session.Out() << "up: " << session.Paths().Root() << '\n';
  return 0;
}

int Up(Session& session, const Invocation& words) {
  if (session.Paths().Root() == "/") {
    throw Failure(Exit::Usage, "a TV takes a directory of its own, not /: give another --root");
  }
  const StartLimit limit(words);
  const auto arguments = TvArguments(session.Paths(), words);
  const Json::Value status = StatusOrNull(session);
  if (!status.isNull()) {
    return AlreadyUp(session, words, limit, status);
  }
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
    // The bus may end before the answer is out.
    if (error.Code() != DeskError::NoTv) {
      throw;
    }
  }
  if (pid > 0 && !WaitForEnd(pid, END_LIMIT)) {
    throw Failure(Exit::TimedOut, "desk-tv (pid " + std::to_string(pid) +
                                      ") has not ended: end it with `kill -9`, the next tv up "
                                      "clears up after it");
  }
  session.Out() << "down: " << session.Paths().Root() << '\n';
  return 0;
}

std::string Duration(double seconds) {
  const auto whole = static_cast<long long>(std::floor(seconds));
  if (whole < 60) return std::to_string(whole) + " s";
  if (whole < 3600) return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
  return std::to_string(whole / 3600) + " h " + std::to_string(whole / 60 % 60) + " min";
}

std::string Shown(const Json::Value& value) {
  if (value.isBool()) return value.asBool() ? "yes" : "no";
  if (value.isObject() || value.isArray()) return FormatJson(value);
  return value.asString();
}

std::string DaemonText(const Json::Value& daemon) {
  if (!daemon.isObject()) {
    return Shown(daemon);
  }
  const std::string reason = OneLine(daemon["reason"].asString());
  const std::string restarts = ", " + daemon["restarts"].asString() + " restarts";
  if (!daemon["running"].asBool()) {
    return "not running" + (reason.empty() ? "" : " (" + reason + ")") + restarts;
  }
  return "running, pid " + daemon["pid"].asString() + restarts +
         (reason.empty() ? "" : "; last end: " + reason);
}

int Status(Session& session, const Invocation& words) {
  const Json::Value status = session.Call("tv.status");
  if (words.Json()) {
    session.PrintJson(status);
    return 0;
  }
  session.Out() << "desk     " << session.Paths().Root() << "\nTV       up, pid "
                << status["pid"].asString() << ", since " << Duration(status["uptime"].asDouble())
                << "\ndaemon   " << DaemonText(status["daemon"]) << "\nspeed    "
                << Shown(status["speed"]) << "\noffline  " << Shown(status["offline"])
                << "\nsandbox  " << Shown(status["sandbox"]) << "\nmounts   "
                << OneLine(Shown(status["mounts"])) << '\n';
  return 0;
}

/// An order that is done when the daemon is in its main loop.
Run OrderToStart(const std::string& method) {
  return [method](Session& session, const Invocation& words) {
    const StartLimit limit(words);
    try {
      session.Tv().CallWithin(limit.Left(), method, Json::Value(Json::objectValue));
    } catch (const DeskError& error) {
      if (error.Code() == DeskError::Timeout) {
        throw limit.Passed();
      }
      throw;
    }
    return 0;
  };
}

Run DaemonOrder(const std::string& method) {
  return [method](Session& session, const Invocation&) {
    session.Call(method);
    return 0;
  };
}

}  // namespace

std::vector<Command> LifeCommands() {
  const Option timeout{"--timeout", "S", "seconds to wait for the daemon's main loop; else 120"};
  return {
      {"up",
       "switch a TV on",
       {},
       {{"--speed", "N", "the daemon's timers and clock run N times faster"},
        {"--offline", "", "network time does not come by itself"},
        {"--foreground", "", "stay in the foreground, in place of this command"},
        {"--no-sandbox", "", "run the daemon without bubblewrap"},
        timeout},
       "Makes the desk's directory when there is none. Returns when the daemon is in its main "
       "loop.",
       Up},
      {"down", "switch the TV off", {}, {}, "", Down},
      {"status", "how the TV and its daemon are", {}, {JsonOption()}, "", Status},
      {"power-cycle",
       "switch the TV off and on",
       {},
       {timeout},
       "Keys under memory/ and rtc/ are lost, and /tmp is emptied. Returns when the daemon is in "
       "its\nmain loop again.",
       OrderToStart("tv.power_cycle")},
      {"daemon stop", "end the daemon and leave it ended", {}, {}, "", DaemonOrder("daemon.stop")},
      {"daemon start",
       "start the daemon again",
       {},
       {timeout},
       "Returns when the daemon is in its main loop.",
       OrderToStart("daemon.start")},
      {"daemon kill",
       "kill the daemon without warning, as a crash would",
       {},
       {},
       "",
       DaemonOrder("daemon.kill")},
      {"daemon restart",
       "end the daemon and start it again",
       {},
       {timeout},
       "Returns when the daemon is in its main loop again.",
       OrderToStart("daemon.restart")}};
}

}  // namespace desk
