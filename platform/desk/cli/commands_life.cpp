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

constexpr std::chrono::seconds START_LIMIT(120);
constexpr std::chrono::seconds END_LIMIT(20);
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
    words.Number("speed", 1, 1, 100000);
    arguments.insert(arguments.end(), {"--speed", words.Text("speed")});
  }
  for (const char* name : {"offline", "no-sandbox"}) {
    if (words.Has(name)) {
      arguments.push_back(std::string("--") + name);
    }
  }
  return arguments;
}

/// Prints what desk-tv left in its log when it ended without a word.
[[noreturn]] void TellFailedStart(Session& session, const StartResult& result, Tail& log) {
  if (result.kind == StartResult::Kind::Failed && !result.reason.empty()) {
    throw Failure(Exit::Failed, "the TV did not start: " + result.reason);
  }
  auto lines = log.Read();
  const size_t first = lines.size() - std::min(lines.size(), SHOWN_LOG_LINES);
  for (size_t i = first; i < lines.size(); ++i) {
    session.Err() << "  " << OneLine(lines[i]) << '\n';
  }
  const bool late = result.kind == StartResult::Kind::TimedOut;
  throw Failure(late ? Exit::TimedOut : Exit::Failed,
                (late ? "the TV did not get ready within " + std::to_string(START_LIMIT.count()) +
                            " seconds: "
                      : std::string("the TV did not start: ")) +
                    session.Paths().TvLog() + " tells why");
}

/// Somebody else's start is awaited too: up means that the daemon is in its main loop.
Json::Value WaitWhileStarting(Session& session, Json::Value status) {
  const auto end = std::chrono::steady_clock::now() + START_LIMIT;
  session.Tv().Subscribe("daemon", [](const Json::Value&) {});
  while (status["daemon"]["state"].asString() == "starting" &&
         std::chrono::steady_clock::now() < end) {
    session.Tv().Wait(std::chrono::milliseconds(100));
    status = session.Call("tv.status");
  }
  return status;
}

/// The TV that another `tv up` is starting in this very moment, or null.
Json::Value StartedByAnother(Session& session) {
  for (int i = 0; i < 500; ++i) {
    std::ifstream file(session.Paths().PidFile());
    pid_t pid = 0;
    if (!(file >> pid) || kill(pid, 0) != 0) {
      return Json::Value();
    }
    Json::Value status = StatusOrNull(session);
    if (!status.isNull()) {
      return status;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return Json::Value();
}

int AlreadyUp(Session& session, const Invocation& words, const Json::Value& found) {
  const Json::Value status = WaitWhileStarting(session, found);
  session.Out() << "already up: " << session.Paths().Root() << ", pid " << status["pid"].asString();
  if (words.Has("speed") || words.Has("offline") || words.Has("no-sandbox")) {
    session.Out() << "; its options stay as they are until `tv down`";
  }
  session.Out() << '\n';
  return 0;
}

int Up(Session& session, const Invocation& words) {
  if (session.Paths().Root() == "/") {
    throw Failure(Exit::Usage, "a TV takes a directory of its own, not /: give another --root");
  }
  const auto arguments = TvArguments(session.Paths(), words);
  const Json::Value status = StatusOrNull(session);
  if (!status.isNull()) {
    return AlreadyUp(session, words, status);
  }
  const std::string program = FindDeskTv();
  if (words.Has("foreground")) {
    session.Out().flush();
    BecomeProgram(program, arguments);
  }
  Tail log(session.Paths().TvLog());
  log.Read();
  const StartResult result = StartInBackground(session.Paths(), program, arguments, START_LIMIT);
  if (result.kind != StartResult::Kind::Ready) {
    const Json::Value other = StartedByAnother(session);
    if (other.isNull()) {
      TellFailedStart(session, result, log);
    }
    return AlreadyUp(session, words, other);
  }
  session.Out() << "up: " << session.Paths().Root() << '\n';
  return 0;
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
  if (!daemon["running"].asBool()) {
    const std::string reason = daemon["reason"].asString();
    return "not running" + (reason.empty() ? "" : " (" + OneLine(reason) + ")") + ", " +
           daemon["restarts"].asString() + " restarts";
  }
  return "running, pid " + daemon["pid"].asString() + ", " + daemon["restarts"].asString() +
         " restarts";
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

int PowerCycle(Session& session, const Invocation&) {
  session.Call("tv.power_cycle");
  return 0;
}

Run DaemonOrder(const std::string& method) {
  return [method](Session& session, const Invocation&) {
    session.Call(method);
    return 0;
  };
}

}  // namespace

std::vector<Command> LifeCommands() {
  return {
      {"up",
       "switch a TV on",
       {},
       {{"--speed", "N", "the daemon's timers and clock run N times faster"},
        {"--offline", "", "network time does not come by itself"},
        {"--foreground", "", "stay in the foreground, in place of this command"},
        {"--no-sandbox", "", "run the daemon without bubblewrap"}},
       "Makes the desk's directory when there is none. Returns when the daemon is in its main "
       "loop.",
       Up},
      {"down", "switch the TV off", {}, {}, "", Down},
      {"status", "how the TV and its daemon are", {}, {JsonOption()}, "", Status},
      {"power-cycle",
       "switch the TV off and on",
       {},
       {},
       "Keys under memory/ and rtc/ are lost, and /tmp is emptied. Returns when the daemon is in "
       "its\nmain loop again.",
       PowerCycle},
      {"daemon stop", "end the daemon and leave it ended", {}, {}, "", DaemonOrder("daemon.stop")},
      {"daemon start", "start the daemon again", {}, {}, "", DaemonOrder("daemon.start")},
      {"daemon kill",
       "kill the daemon without warning, as a crash would",
       {},
       {},
       "",
       DaemonOrder("daemon.kill")},
      {"daemon restart",
       "end the daemon and start it again",
       {},
       {},
       "",
       DaemonOrder("daemon.restart")}};
}

}  // namespace desk
