// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv pkg
#include <filesystem>
#include <ostream>

#include "desk/checks/package_reader.h"
#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/cli/interrupt.h"
#include "desk/cli/progress_bar.h"
#include "desk/cli/session.h"
#include "desk/cli/table.h"
#include "desk/common/desk_error.h"

namespace desk::cli {
namespace {

std::string AppList(const Json::Value& package, const std::string& component) {
  std::string list;
  for (const auto& app : package["apps"]) {
    if (app["component"].asString() == component) {
      list += (list.empty() ? "" : ",") + app["id"].asString();
    }
  }
  return list;
}

/// The TV may be unable to mount an image of the package, which then is installed without its data.
void WarnOfImages(Session& session, const std::string& package) {
  const Json::Value answer = session.Call("mount.check", Object({{"package", package}}));
  for (const auto& item : answer["unmountable"]) {
    session.Err() << "tv: warning: " << package << " is installed without the data in "
                  << item["image"].asString()
                  << ", which this TV cannot mount: " << OneLine(item["reason"].asString()) << '\n';
  }
}

/// The daemon learns of a change only from the package manager's events, while it runs.
void WarnIfDaemonStopped(Session& session, const std::string& what) {
  const Json::Value running = session.Call("tv.status")["daemon"]["running"];
  if (!running.isBool() || running.asBool()) {
    return;
  }
  const bool removal = what == "removal";
  session.Err() << "tv: warning: the daemon is not running and will not learn of this " << what
                << ". "
                << (removal ? "Start it, then install the package and uninstall it again."
                            : "Start it with `tv daemon start`, then uninstall the package and "
                              "install it again.")
                << '\n';
}

std::vector<Finding> Check(const std::string& file) {
  try {
    const ReadablePackage package = ReadArchive(file);
    return CheckPackage(package, RuleOnPackage(package.facts));
  } catch (const DeskError& error) {
    return {MakeFinding(Message::NotChecked, {error.what()})};
  }
}

void PrintResult(Session& session, const Json::Value& reply, bool update) {
  session.Out() << (update ? "updated " : "installed ") << reply["package"].asString() << ' '
                << reply["version"].asString() << '\n';
}

int Bring(Session& session, const Invocation& words, bool update) {
  const std::string given = words.Text("FILE");
  std::error_code error;
  const std::string file = std::filesystem::absolute(given, error).string();
  if (!std::filesystem::exists(file, error)) {
    throw Failure(Exit::NotFound,
                  "there is no file " + given + ": give the path of a .wgt archive");
  }
  session.Tv();
  const bool shown = session.Terminal() && !words.Json();
  ProgressBar bar(session.Out(), update ? "updating" : "installing");
  if (shown) {
    session.Tv().Subscribe("package", [&bar](const Json::Value& event) {
      if (event["state"].asString() == "processing") {
        bar.Show(event["progress"].asInt());
      }
    });
  }
  Json::Value reply;
  {
    const InterruptNotice notice(
        "tv: interrupted; the TV continues to " + std::string(update ? "update" : "install") +
        " the package and cannot be stopped half-way: `tv pkg list` shows the result, `tv pkg "
        "uninstall ID` removes it");
    reply = session.Call("pkg.install", Object({{"file", file}, {"update", update}}));
  }
  bar.Clear();
  WarnOfImages(session, reply["package"].asString());
  const std::vector<Finding> findings = Check(file);
  if (words.Json()) {
    reply["findings"] = ToJson(findings);
    session.PrintJson(reply);
  } else {
    PrintResult(session, reply, update);
  }
  for (const auto& finding : findings) {
    session.Err() << "tv: " << OneLine(ToLine(finding)) << '\n';
  }
  WarnIfDaemonStopped(session, update ? "update" : "install");
  return 0;
}

int Install(Session& session, const Invocation& words) {
  return Bring(session, words, false);
}

int Update(Session& session, const Invocation& words) {
  return Bring(session, words, true);
}

int Uninstall(Session& session, const Invocation& words) {
  session.Call("pkg.uninstall", Object({{"package", words.Text("ID")}}));
  session.Out() << "uninstalled " << words.Text("ID") << '\n';
  WarnIfDaemonStopped(session, "removal");
  return 0;
}

int List(Session& session, const Invocation& words) {
  const Json::Value packages = session.Call("pkg.list")["packages"];
  if (words.Json()) {
    session.PrintJson(packages);
    return 0;
  }
  Table table({"PACKAGE", "VERSION", "UI", "SERVICE"});
  for (const auto& package : packages) {
    table.Add({package["id"].asString(), package["version"].asString(), AppList(package, "ui"),
               AppList(package, "service")});
  }
  table.Print(session.Out());
  return 0;
}

void PrintInfo(std::ostream& out, const Json::Value& info) {
  out << "id       " << info["id"].asString() << "\nversion  " << info["version"].asString()
      << "\nlabel    " << OneLine(info["label"].asString()) << "\npath     "
      << info["path"].asString() << '\n';
  for (const auto& app : info["apps"]) {
    out << "\n" << app["id"].asString() << " (" << app["component"].asString() << ")\n";
    if (!app["program"].asString().empty()) {
      out << "  program  " << app["program"].asString() << '\n';
    }
    for (const auto& entry : app["metadata"]) {
      out << "  " << OneLine(entry["key"].asString()) << " = \""
          << OneLine(entry["value"].asString()) << "\"\n";
    }
  }
}

int Info(Session& session, const Invocation& words) {
  Json::Value info = session.Call("pkg.info", Object({{"package", words.Text("ID")}}));
  if (!info["found"].asBool()) {
    throw Failure(Exit::NotFound, "there is no package \"" + words.Text("ID") +
                                      "\": `tv pkg list` shows those that are installed");
  }
  info.removeMember("found");
  if (words.Json()) {
    session.PrintJson(info);
  } else {
    PrintInfo(session.Out(), info);
  }
  return 0;
}

}  // namespace

std::vector<Command> PackageCommands() {
  const Argument file{"FILE", "a .wgt archive"};
  const Argument id{"ID", "package id"};
  return {
      {"pkg install",
       "install a package",
       {file},
       {JsonOption()},
       "Returns when the package manager has reported the package as installed.",
       Install},
      {"pkg update", "install another version of a package", {file}, {JsonOption()}, "", Update},
      {"pkg uninstall", "remove a package", {id}, {}, "", Uninstall},
      {"pkg list", "the installed packages", {}, {JsonOption()}, "", List},
      {"pkg info", "one package with its apps and metadata", {id}, {JsonOption()}, "", Info}};
}

}  // namespace desk::cli
