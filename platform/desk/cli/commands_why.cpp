// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv why, tv schedule
#include <algorithm>
#include <ostream>

#include "desk/cli/commands.h"
#include "desk/cli/dump.h"
#include "desk/cli/failure.h"
#include "desk/cli/schedule.h"
#include "desk/cli/session.h"
#include "desk/cli/table.h"
#include "desk/cli/time_text.h"
#include "desk/cli/verdict.h"
#include "desk/common/json.h"

namespace desk::cli {
namespace {

constexpr std::int64_t SHOWN_LINES = 40;

Facts Gather(Session& session) {
  Facts facts{session.Paths(), {}, {}, {}, {}};
  facts.now = std::chrono::seconds(session.Call("tv.status")["clock"].asInt64());
  std::string trouble;
  facts.dump = ComposeDump(session.Tv(), session.Paths(), trouble);
  if (!trouble.empty()) {
    session.Err() << "tv: " << trouble << '\n';
  }
  facts.evidence = Evidence::Read(session.Paths());
  facts.requests = LaunchRequestsIn(facts.evidence.journal);
  return facts;
}

/// What an id names; one of the two is empty where it has no app or no package.
struct Named {
  std::string package;
  std::string app;
};

Named Resolve(const Json::Value& dump, const std::string& id) {
  if (!PackageIn(dump, id).isNull() || !RowOf(dump, id).isNull()) {
    return {id, ""};
  }
  const Json::Value& app = AppIn(dump, id);
  if (app.isNull()) {
    throw Failure(Exit::NotFound, "there is no package or app \"" + id +
                                      "\": `tv pkg list` and `tv app list` show all");
  }
  return {app["package"].asString(), id};
}

Json::Value ToJson(const std::vector<AccountLine>& account, const std::vector<Verdict>& verdicts) {
  Json::Value result(Json::objectValue);
  result["account"] = Json::Value(Json::arrayValue);
  for (const auto& line : account) {
    result["account"].append(Object(
        {{"time", FormatTimestamp(line.time)}, {"source", line.source}, {"text", line.text}}));
  }
  result["verdicts"] = Json::Value(Json::arrayValue);
  for (const auto& verdict : verdicts) {
    result["verdicts"].append(Object({{"about", verdict.about}, {"text", verdict.text}}));
  }
  return result;
}

void PrintAccount(std::ostream& out, const std::vector<AccountLine>& account, std::size_t left) {
  for (const auto& line : account) {
    out << FormatTimestamp(line.time) << "  " << line.source
        << std::string(std::size_t{7} - std::min<std::size_t>(7, line.source.size()), ' ') << "  "
        << OneLine(line.text) << '\n';
  }
  if (left > 0) {
    out << Plural(static_cast<std::int64_t>(left), "older line") << " left out: -n 0 shows all\n";
  }
}

int Why(Session& session, const Invocation& words) {
  const Facts facts = Gather(session);
  const Named named = Resolve(facts.dump, words.Text("ID"));
  const Json::Value& row = RowOf(facts.dump, named.package);
  const bool ofService = named.app.empty() || named.app == row["service_id"].asString();
  const Subject subject(named.package, named.app, ofService ? DueTextOf(row) : "");
  auto account = AccountOf(facts.evidence, facts.paths, subject, facts.now);
  const auto verdicts = VerdictsOf(facts, named.package, named.app);
  const auto most = static_cast<std::size_t>(words.Number("lines", SHOWN_LINES, 0));
  const std::size_t left = most > 0 && account.size() > most ? account.size() - most : 0;
  account.resize(account.size() - left);
  if (words.Json()) {
    session.PrintJson(ToJson(account, verdicts));
    return 0;
  }
  PrintAccount(session.Out(), account, left);
  for (const auto& verdict : verdicts) {
    session.Out() << "verdict  " << verdict.about << ": " << OneLine(verdict.text) << '\n';
  }
  return 0;
}

std::string DueCell(const Json::Value& app) {
  const std::string due = app["due"].asString();
  if (due.empty() || !app.isMember("due_in")) {
    return due.empty() ? "always" : due;
  }
  const std::int64_t seconds = app["due_in"].asInt64();
  return seconds == 0 ? "now" : "in " + DurationText(std::chrono::seconds(seconds));
}

int Schedule(Session& session, const Invocation& words) {
  const Json::Value schedule = DescribeSchedule(Gather(session));
  if (words.Json()) {
    session.PrintJson(schedule);
    return 0;
  }
  Table table({"APP", "DUE", "LAST LAUNCH", "ENDED"});
  for (const auto& app : schedule["apps"]) {
    const std::string end =
        app["running"].asBool() ? "runs, pid " + app["pid"].asString() : app["end"].asString();
    table.Add({app["app"].asString(), DueCell(app), app["last_launch"].asString(), end});
  }
  table.Print(session.Out());
  session.Out() << "waits for " << schedule["waits_for"].asString() << '\n';
  return 0;
}

}  // namespace

std::vector<Command> WhyCommands() {
  return {{"why",
           "why a package or app was not launched or fed",
           {{"ID", "package id or app id"}},
           {{"-n,--lines", "N", "the newest N lines, 0 for all; else 40"}, JsonOption()},
           "Merges what the daemon's log, the journal, desk-tv's log and the app's own output say\n"
           "about it, newest first, in the TV's clock. The last line is the verdict.",
           Why},
          {"schedule",
           "the service apps and when they run",
           {},
           {JsonOption()},
           "Shows when each app is due, its last launch and how that ended, and what the schedule\n"
           "waits for.",
           Schedule}};
}

}  // namespace desk::cli
