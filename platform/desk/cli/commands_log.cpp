// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv log, tv journal
#include <algorithm>
#include <ostream>

#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/cli/journal_view.h"
#include "desk/cli/log_view.h"
#include "desk/cli/platform_calls.h"
#include "desk/cli/session.h"
#include "desk/cli/table.h"
#include "desk/cli/tail.h"
#include "desk/cli/time_text.h"
#include "desk/common/desk_error.h"
#include "desk/common/nearest.h"

namespace desk::cli {
namespace {

constexpr const char* RED = "\x1b[31m";
constexpr const char* PLAIN = "\x1b[0m";

void NeedFile(const std::string& path, bool follow) {
  if (!follow && !Tail(path).Exists()) {
    throw Failure(Exit::NotFound, path + " does not exist yet: start the TV with `tv up`");
  }
}

void PrintLogLine(Session& session, const Invocation& words, const std::string& line) {
  const auto record = ParseLogLine(line);
  if (words.Json()) {
    LogRecord unknown;
    unknown.text = line;
    session.PrintJsonLine(ToJson(record.value_or(unknown)));
    return;
  }
  const bool red =
      session.Terminal() && record.has_value() && (record->level == 'E' || record->level == 'F');
  session.Out() << (red ? RED : "") << OneLine(line) << (red ? PLAIN : "") << '\n';
}

int Log(Session& session, const Invocation& words) {
  const LogFilter filter{ParseLevel(words.TextOr("level", "V")), words.Text("grep")};
  const bool follow = words.Has("follow");
  NeedFile(session.Paths().DaemonLog(), follow);
  ReadLines(session.Paths().DaemonLog(), follow, [&](const std::vector<std::string>& lines) {
    for (const auto& line : lines) {
      if (filter.Wants(line)) {
        PrintLogLine(session, words, line);
      }
    }
    session.Out().flush();
    return session.Out().good();
  });
  return 0;
}

/// The TV's clock; the machine's when no TV runs.
Timestamp TvTime(Session& session) {
  try {
    return std::chrono::seconds(session.Call("tv.status")["clock"].asInt64());
  } catch (const DeskError&) {
    return WallClock();
  }
}

void CheckCallName(const std::string& name) {
  if (name.find_first_of("*?[") != std::string::npos) {
    return;
  }
  std::vector<std::string> calls = PlatformCalls();
  calls.insert(calls.end(), CallsThatCannotFail().begin(), CallsThatCannotFail().end());
  if (std::find(calls.begin(), calls.end(), name) == calls.end()) {
    const std::string near = Nearest(name, calls);
    throw Failure(Exit::NotFound, "there is no platform call \"" + name + "\": " +
                                      (near.empty() ? "`tv journal` shows those the daemon made"
                                                    : "did you mean " + near + "?"));
  }
}

JournalFilter FilterOf(Session& session, const Invocation& words) {
  JournalFilter filter{words.Text("call"), words.Text("thread"), {}};
  if (words.Has("call")) {
    CheckCallName(filter.call);
  }
  if (words.Has("since")) {
    filter.since = ParseSince(words.Text("since"), TvTime(session));
  }
  return filter;
}

void PrintEntry(Session& session, const Invocation& words, const Json::Value& entry) {
  if (words.Json()) {
    session.PrintJsonLine(entry);
  } else {
    session.Out() << JournalText(entry) << '\n';
  }
}

int Journal(Session& session, const Invocation& words) {
  const bool follow = words.Has("follow");
  const JournalFilter filter = FilterOf(session, words);
  NeedFile(session.Paths().Journal(), follow);
  ReadLines(session.Paths().Journal(), follow, [&](const std::vector<std::string>& lines) {
    for (const auto& entry : SortedEntries(lines)) {
      if (filter.Wants(entry)) {
        PrintEntry(session, words, entry);
      }
    }
    session.Out().flush();
    return session.Out().good();
  });
  return 0;
}

}  // namespace

std::vector<Command> LogCommands() {
  const Option follow{"-f,--follow", "", "keep printing what is added"};
  return {{"log",
           "print the daemon's log",
           {},
           {follow,
            {"-l,--level", "LEVEL", "this level and more severe ones: V, D, I, W, E or F"},
            {"-g,--grep", "TEXT", "only lines that contain the text"},
            JsonOption()},
           "Also works when the TV is off. Times are in UTC.",
           Log},
          {"journal",
           "print the platform calls that the daemon made",
           {},
           {follow,
            {"--call", "NAME", "only this call; * and ? match any characters"},
            {"--thread", "NAME",
             "only this thread, such as main or ORVInstaller; * and ? work here too"},
            {"--since", "T", "only calls since a time, or since 90s, 10m, 2h or 1d ago"},
            JsonOption()},
           "In the order in which the calls began, with time (UTC), number, thread, arguments and\n"
           "result. --json prints one object a line. Also works when the TV is off.",
           Journal}};
}

}  // namespace desk::cli
