// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv store, tv dump, tv wait
#include <algorithm>
#include <ostream>

#include "desk/cli/commands.h"
#include "desk/cli/condition.h"
#include "desk/cli/dump.h"
#include "desk/cli/failure.h"
#include "desk/cli/session.h"
#include "desk/cli/store_reader.h"
#include "desk/cli/table.h"
#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::cli {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds LOOK_AGAIN(50);
constexpr double DEFAULT_TIMEOUT = 30;

constexpr const char* BROKEN = "BROKEN JSON";

/// The daemon reads `variables` as an object.
bool IsBroken(const Json::Value& row) {
  return !row["variables"].isNull() && !row["variables"].isObject();
}

std::string TypesOf(const Json::Value& row) {
  const Json::Value& variables = row["variables"];
  if (IsBroken(row)) {
    return BROKEN;
  }
  std::string list;
  if (!variables.isObject() || !variables["orv_type"].isObject()) {
    return list;
  }
  for (const auto& type : variables["orv_type"].getMemberNames()) {
    list += (list.empty() ? "" : ",") + type;
  }
  return list;
}

void WarnOfBrokenRows(Session& session, const Json::Value& rows) {
  for (const auto& row : rows) {
    if (IsBroken(row)) {
      session.Err() << "tv: the variables of " << row["package_id"].asString()
                    << " are not a JSON object: the daemon stops loading its store at this row; "
                       "install the package again\n";
    }
  }
}

int Store(Session& session, const Invocation& words) {
  const Json::Value rows = ReadStore(StorePath(session.Paths()));
  WarnOfBrokenRows(session, rows);
  if (words.Json()) {
    session.PrintJson(rows);
    return 0;
  }
  Table table({"PACKAGE", "VERSION", "APP", "WIDGET", "SERVICE", "TYPES"});
  for (const auto& row : rows) {
    table.Add({row["package_id"].asString(), row["version"].asString(), row["app_id"].asString(),
               row["widget_id"].asString(), row["service_id"].asString(), TypesOf(row)});
  }
  table.Print(session.Out());
  return 0;
}

int Dump(Session& session, const Invocation&) {
  std::string trouble;
  const Json::Value dump = ComposeDump(session.Tv(), session.Paths(), trouble);
  session.PrintJson(dump);
  if (!trouble.empty()) {
    session.Err() << "tv: " << trouble << '\n';
  }
  return 0;
}

/// Any event may make the condition true.
void SubscribeToAll(Television& tv) {
  for (const char* topic : {"key", "package", "app", "daemon", "tvs"}) {
    tv.Subscribe(topic, [](const Json::Value&) {});
  }
}

int Wait(Session& session, const Invocation& words) {
  const double timeout = words.Seconds("timeout", DEFAULT_TIMEOUT);
  Condition condition(words.Text("EXPRESSION"));
  const auto end = Clock::now() + Milliseconds(timeout);
  SubscribeToAll(session.Tv());
  std::string trouble;
  for (bool first = true;; first = false) {
    const Json::Value dump = ComposeDump(session.Tv(), session.Paths(), trouble);
    if (first) {
      condition.CheckMembers(dump);
    }
    if (condition.Holds(dump)) {
      return 0;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) {
      throw Failure(Exit::TimedOut, "timed out after " + SecondsText(timeout) + ": " +
                                        condition.Missing(dump) +
                                        (trouble.empty() ? "" : " (" + trouble + ")"));
    }
    session.Tv().Wait(std::min(left, LOOK_AGAIN));
  }
}

}  // namespace

std::vector<Command> StateCommands() {
  return {
      {"store",
       "print the rows of the daemon's store",
       {},
       {JsonOption()},
       "Reads the file without changing it; also works when the TV is off. With --json a row has\n"
       "one member per column, and variables is decoded. A row whose variables are not a JSON\n"
       "object is marked.",
       Store},
      {"dump", "print everything about the TV as one JSON object", {}, {JsonOption()}, "", Dump},
      {"wait",
       "wait until a condition on the dump holds",
       {{"EXPRESSION", "jq expression on what `tv dump` prints"}},
       {{"--timeout", "S", "seconds; default 30"}},
       "The condition holds when one of the expression's values is neither false nor null. An\n"
       "expression that ends with an error does not hold. One that reads a member which no dump\n"
       "has is refused at once.",
       Wait}};
}

}  // namespace desk::cli
