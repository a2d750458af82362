// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv was
#include <ostream>

#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/cli/session.h"
#include "desk/cli/table.h"

namespace desk::cli {
namespace {

std::string GoneText(const Json::Value& gone) {
  const bool yes = gone.isBool() ? gone.asBool() : gone.isNumeric() && gone.asInt() != 0;
  return yes ? "gone" : "";
}

int List(Session& session, const Invocation& words) {
  const Json::Value entries = session.Call("was.list")["entries"];
  if (words.Json()) {
    session.PrintJson(entries);
    return 0;
  }
  Table table({"PACKAGE", "APP", "WIDGET", "KIND", "STATE"});
  table.AlignRight(3);
  for (const auto& entry : entries) {
    table.Add({entry["package"].asString(), entry["app"].asString(), entry["widget"].asString(),
               entry["kind"].asString(), GoneText(entry["gone"])});
  }
  table.Print(session.Out());
  return 0;
}

int Set(Session& session, const Invocation& words) {
  Json::Value request = Object({{"package", words.Text("PACKAGE")}});
  if (words.Has("widget")) {
    request["widget"] = words.Text("widget");
  }
  if (words.Has("kind")) {
    request["kind"] = static_cast<Json::Int>(words.Number("kind", 0, INT32_MIN, INT32_MAX));
  }
  if (words.Has("gone") && words.Has("present")) {
    throw Failure(Exit::Usage, "--gone and --present contradict each other: give only one");
  }
  if (words.Has("gone") || words.Has("present")) {
    request["gone"] = words.Has("gone");
  }
  const Json::Value entry = session.Call("was.set", request);
  if (words.Json()) {
    session.PrintJson(entry);
  }
  return 0;
}

int Remove(Session& session, const Invocation& words) {
  const std::string package = words.Text("PACKAGE");
  if (!session.Call("was.remove", Object({{"package", package}}))["found"].asBool()) {
    throw Failure(Exit::NotFound,
                  "the web-app service has no entry \"" + package + "\": `tv was list` shows all");
  }
  return 0;
}

int Delay(Session& session, const Invocation& words) {
  const auto seconds = static_cast<Json::Int>(words.Number("S", 0, 0, INT32_MAX));
  session.Call("was.delay", Object({{"seconds", seconds}}));
  return 0;
}

}  // namespace

std::vector<Command> WebAppServiceCommands() {
  const Argument package{"PACKAGE", "package id"};
  return {{"was list", "list the entries of the web-app service", {}, {JsonOption()}, "", List},
          {"was set",
           "change or create an entry",
           {package},
           {{"--widget", "ID", "widget id"},
            {"--gone", "", "mark the app as removed"},
            {"--present", "", "mark the app as present"},
            {"--kind", "N", "value of the field kind"},
            JsonOption()},
           "",
           Set},
          {"was remove", "remove an entry", {package}, {}, "", Remove},
          {"was delay",
           "set how late the service learns of an install",
           {{"S", "seconds after the install is reported; 0: before it is reported"}},
           {},
           "The delay is 0 again when the TV is switched off.",
           Delay}};
}

}  // namespace desk::cli
