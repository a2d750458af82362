// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv app, tv op
#include <app_control.h>

#include <chrono>
#include <filesystem>
#include <ostream>

#include "desk/cli/bundle_args.h"
#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/cli/result_names.h"
#include "desk/cli/session.h"
#include "desk/cli/table.h"

namespace desk::cli {
namespace {

Failure NoApp(const std::string& id) {
  return Failure(Exit::NotFound, "there is no app \"" + id + "\": `tv app list` shows all");
}

/// Throws when the app is unknown; the reply of `app.info`.
Json::Value KnownApp(Session& session, const std::string& id) {
  Json::Value app = session.Call("app.info", Object({{"app", id}}));
  if (!app["found"].asBool()) {
    throw NoApp(id);
  }
  return app;
}

int List(Session& session, const Invocation& words) {
  const Json::Value apps = session.Call("app.list")["apps"];
  if (words.Json()) {
    session.PrintJson(apps);
    return 0;
  }
  Table table({"APP", "PACKAGE", "KIND", "PID", "STATUS"});
  table.AlignRight(3);
  for (const auto& app : apps) {
    const bool running = app["running"].asBool();
    table.Add({app["id"].asString(), app["package"].asString(), app["component"].asString(),
               running ? app["pid"].asString() : "", app["status"].asString()});
  }
  table.Print(session.Out());
  return 0;
}

int Add(Session& session, const Invocation& words) {
  std::error_code error;
  const std::string program = std::filesystem::absolute(words.Text("PROGRAM"), error).string();
  if (!std::filesystem::exists(program, error)) {
    throw Failure(Exit::NotFound,
                  "there is no file " + program + ": give the path of a program or script");
  }
  session.Call("app.add", Object({{"app", words.Text("ID")}, {"program", program}}));
  return 0;
}

constexpr std::chrono::milliseconds LOOK_FOR_END{300};

/// Warns when the process has ended already, as one does that fails at its start.
void WarnIfEnded(Session& session, const std::string& id, const bool& ended) {
  const auto deadline = std::chrono::steady_clock::now() + LOOK_FOR_END;
  for (auto now = std::chrono::steady_clock::now(); !ended && now < deadline;
       now = std::chrono::steady_clock::now()) {
    session.Tv().Wait(std::chrono::duration_cast<std::chrono::milliseconds>(deadline - now));
  }
  if (ended) {
    session.Err() << "tv: warning: " << id << " ended at once: `tv why " << id
                  << "` shows its output\n";
  }
}

int Launch(Session& session, const Invocation& words) {
  const std::string id = words.Text("ID");
  bool ended = false;
  session.Tv().Subscribe("app", [&](const Json::Value& event) {
    const std::string state = event["state"].asString();
    ended = ended || (event["id"].asString() == id && (state == "exited" || state == "killed"));
  });
  const Json::Value reply = session.Call(
      "app.launch", Object({{"app", id},
                            {"operation", words.TextOr("operation", APP_CONTROL_OPERATION_DEFAULT)},
                            {"extra", ParsePairs(words.All("PAIR"))}}));
  const int result = reply["result"].asInt();
  if (result == APP_CONTROL_ERROR_APP_NOT_FOUND) {
    throw NoApp(id);
  }
  if (result != 0) {
    throw Failure(Exit::Failed, "cannot launch " + id + " (" + AppControlResultName(result) +
                                    "): `tv why " + id + "` shows the reason");
  }
  if (words.Json()) {
    session.PrintJson(reply);
  } else {
    session.Out() << "launched " << id << ", pid " << reply["pid"].asString() << '\n';
  }
  WarnIfEnded(session, id, ended);
  return 0;
}

int Kill(Session& session, const Invocation& words) {
  const std::string id = words.Text("ID");
  if (!KnownApp(session, id)["running"].asBool()) {
    throw Failure(Exit::Failed, id + " is not running: `tv app launch " + id + "` starts it");
  }
  const int result = session.Call("app.kill", Object({{"app", id}}))["result"].asInt();
  if (result != 0) {
    throw Failure(Exit::Failed, "cannot kill " + id + " (" + AppControlResultName(result) + ")");
  }
  return 0;
}

/// Only app.list has the state of a web app.
Json::Value ListedApp(Session& session, const std::string& id) {
  const Json::Value apps = session.Call("app.list")["apps"];
  for (const auto& app : apps) {
    if (app["id"].asString() == id) {
      return app;
    }
  }
  throw NoApp(id);
}

void PrintStatus(Session& session, const Invocation& words) {
  const Json::Value app = ListedApp(session, words.Text("ID"));
  if (words.Json()) {
    session.PrintJson(app);
    return;
  }
  if (!app["running"].asBool()) {
    session.Out() << "not running\n";
    return;
  }
  const std::string state = app["status"].asString();
  session.Out() << "running, pid " << app["pid"].asString() << (state.empty() ? "" : ", state ")
                << state << '\n';
}

int Status(Session& session, const Invocation& words) {
  if (!words.Has("STATE")) {
    PrintStatus(session, words);
  } else {
    session.Call("app.status", Object({{"app", words.Text("ID")}, {"word", words.Text("STATE")}}));
  }
  return 0;
}

[[noreturn]] void OperationFailed(const std::string& operation, int result) {
  throw Failure(Exit::Failed, "cannot change which app answers " + operation + " (" +
                                  AppControlResultName(result) +
                                  "): `tv fail --clear` removes injected faults");
}

/// "channel-list" and "epg" are short for the two operations that the daemon sets.
std::string OperationNamed(const std::string& name) {
  if (name == "channel-list" || name == "channel_list") {
    return ORV_OPERATION_CHANNEL_LIST;
  }
  if (name == "epg") {
    return ORV_OPERATION_EPG;
  }
  return name;
}

int OpGet(Session& session, const Invocation& words) {
  const std::string operation = OperationNamed(words.Text("OPERATION"));
  const Json::Value reply = session.Call("op.get", Object({{"operation", operation}}));
  if (words.Json()) {
    session.PrintJson(reply);
  }
  if (reply["result"].asInt() != 0) {
    throw Failure(Exit::Failed, "cannot find out which app answers " + operation + " (" +
                                    AppControlResultName(reply["result"].asInt()) + ")");
  }
  if (!reply.isMember("app")) {
    throw Failure(Exit::NotFound, "no app answers " + operation + ": set one with `tv op set`");
  }
  if (!words.Json()) {
    session.Out() << reply["app"].asString() << '\n';
  }
  return 0;
}

int OpSet(Session& session, const Invocation& words) {
  const std::string operation = OperationNamed(words.Text("OPERATION"));
  const int result =
      session
          .Call("op.set", Object({{"operation", operation}, {"app", words.Text("APP")}}))["result"]
          .asInt();
  if (result != 0) {
    OperationFailed(operation, result);
  }
  const Json::Value found = session.Call("app.info", Object({{"app", words.Text("APP")}}))["found"];
  if (found.isBool() && !found.asBool()) {
    session.Err() << "tv: warning: there is no app \"" << words.Text("APP")
                  << "\": nothing answers the operation until one with this id is installed\n";
  }
  return 0;
}

int OpReset(Session& session, const Invocation& words) {
  const std::string operation = OperationNamed(words.Text("OPERATION"));
  const int result = session.Call("op.reset", Object({{"operation", operation}}))["result"].asInt();
  if (result != 0) {
    OperationFailed(operation, result);
  }
  return 0;
}

int OpList(Session& session, const Invocation& words) {
  const Json::Value operations = session.Call("op.list")["operations"];
  if (words.Json()) {
    session.PrintJson(operations);
    return 0;
  }
  Table table({"OPERATION", "APP"});
  for (const auto& operation : operations) {
    table.Add({operation["operation"].asString(), operation["app"].asString()});
  }
  table.Print(session.Out());
  return 0;
}

}  // namespace

std::vector<Command> AppCommands() {
  const Argument id{"ID", "app id"};
  const Argument operation{"OPERATION",
                           "an operation; channel-list and epg are short for two of them"};
  const Argument pairs{"PAIR", "extra data as key=value", Argument::Count::Any};
  const Option launchOperation{"--operation", "OPERATION",
                               "default: the platform's default operation"};
  return {
      {"app list", "list the apps and which of them run", {}, {JsonOption()}, "", List},
      {"app add",
       "declare an app that is not part of a package",
       {id, {"PROGRAM", "any executable file"}},
       {},
       "It is kept when the TV is switched off. The first-screen app and the replacement UI are "
       "such\napps.",
       Add},
      {"app launch",
       "start an app",
       {id, pairs},
       {launchOperation, JsonOption()},
       "The new process finds the operation in TV_OPERATION and the extra data, a JSON object, in\n"
       "TV_DATA.",
       Launch},
      {"app kill", "kill an app's process", {id}, {}, "", Kill},
      {"app status",
       "print an app's status, or make a web app enter a state",
       {id,
        {"STATE",
         "init, load, preload, resume, pause, destroy or quit; without it the status is "
         "printed",
         Argument::Count::Optional}},
       {JsonOption()},
       "",
       Status},
      {"op list",
       "list the operations and the apps that answer them",
       {},
       {JsonOption()},
       "",
       OpList},
      {"op get", "print the app that answers an operation", {operation}, {JsonOption()}, "", OpGet},
      {"op set", "make an app answer an operation", {operation, {"APP", "app id"}}, {}, "", OpSet},
      {"op reset", "make no app answer an operation", {operation}, {}, "", OpReset}};
}

}  // namespace desk::cli
