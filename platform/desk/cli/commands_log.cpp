// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv log, tv journal
#include <ostream>

#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/journal_view.h"
#include "cli/log_view.h"
#include "cli/session.h"
#include "cli/table.h"
#include "cli/tail.h"

namespace desk {
namespace {

constexpr const char* RED = "\x1b[31m";
constexpr const char* PLAIN = "\x1b[0m";

void NeedFile(const std::string& path, bool follow) {
  if (!follow && !Tail(path).Exists()) {
    throw Failure(Exit::NotFound,
                  "there is no " + path + " yet: `tv up` starts a TV that writes it");
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

int Journal(Session& session, const Invocation& words) {
  const bool follow = words.Has("follow");
  NeedFile(session.Paths().Journal(), follow);
  ReadLines(session.Paths().Journal(), follow, [&](const std::vector<std::string>& lines) {
    for (const auto& entry : SortedEntries(lines)) {
      if (words.Json()) {
        session.PrintJsonLine(entry);
      } else {
        session.Out() << JournalText(entry) << '\n';
      }
    }
    session.Out().flush();
    return session.Out().good();
  });
  return 0;
}

}  // namespace

std::vector<Command> LogCommands() {
  const Option follow{"-f,--follow", "", "go on with what is written from now on"};
  return {{"log",
           "the daemon's log",
           {},
           {follow,
            {"-l,--level", "LEVEL", "this level and graver ones: V, D, I, W, E or F"},
            {"-g,--grep", "TEXT", "only lines that hold the text"},
            JsonOption()},
           "Works without a running TV too.",
           Log},
          {"journal",
           "the platform calls that the daemon made",
           {},
           {follow, JsonOption()},
           "In the order in which they began, with thread, arguments and result; --json gives one\n"
           "object a line. Works without a running TV too.",
           Journal}};
}

}  // namespace desk
