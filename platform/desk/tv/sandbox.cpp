// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/sandbox.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace desk::tv {
namespace {

namespace fs = std::filesystem;

constexpr const char* SANDBOX_SOCKET = "/run/tv-bus";

using Arguments = std::vector<std::string>;

void Append(Arguments& arguments, std::initializer_list<std::string> more) {
  arguments.insert(arguments.end(), more);
}

// Binds the machine's entries of one directory, except those that the TV replaces.
void BindEntries(Arguments& arguments, const std::string& parent,
                 const std::vector<HostEntry>& entries, const std::set<std::string>& except) {
  for (const HostEntry& entry : entries) {
    const std::string path = parent + "/" + entry.name;
    if (except.count(entry.name) != 0) {
      continue;
    }
    if (!entry.link.empty()) {
      Append(arguments, {"--symlink", entry.link, path});
    } else if (entry.directory) {
      Append(arguments, {"--ro-bind-try", path, path});
    }
  }
}

void BindMachine(Arguments& arguments, const SandboxPlan& plan) {
  BindEntries(arguments, "", plan.root, {"dev", "home", "opt", "proc", "run", "tmp"});
  Append(arguments, {"--dev", "/dev", "--ro-bind", "/proc", "/proc"});
  BindEntries(arguments, "/opt", plan.opt, {"share", "usr"});
  BindEntries(arguments, "/home", plan.home, {"owner"});
}

void BindTv(Arguments& arguments, const SandboxPlan& plan) {
  const DeskPaths& paths = plan.paths;
  const std::string own = std::string("/opt/usr/apps/") + DeskPaths::DAEMON_ID;
  const std::string run = DeskPaths::SANDBOX_RUN;
  Append(arguments, {"--bind", paths.Tmp(), "/tmp"});
  Append(arguments, {"--bind", paths.OptShare(), "/opt/share"});
  Append(arguments, {"--bind", paths.HomeOwner(), "/home/owner"});
  Append(arguments, {"--ro-bind", paths.Apps(), "/opt/usr/apps"});
  Append(arguments, {"--bind", paths.DaemonPackage(), own});
  Append(arguments, {"--ro-bind", paths.Run(), run});
  Append(arguments, {"--ro-bind", paths.Log(), run + "/log"});
  // A missing log must not keep the daemon from starting.
  Append(arguments, {"--bind-try", paths.Faults(), run + "/faults"});
  Append(arguments, {"--bind-try", paths.DaemonLog(), run + "/log/daemon.log"});
  Append(arguments, {"--bind-try", paths.Journal(), run + "/log/journal.jsonl"});
  if (SandboxSocket(plan) == SANDBOX_SOCKET) {
    Append(arguments, {"--bind", plan.socket, SANDBOX_SOCKET});
  }
  const std::string programs = fs::path(plan.program).parent_path().string();
  Append(arguments, {"--ro-bind", programs, SANDBOX_PROGRAMS});
  Append(arguments, {"--ro-bind", plan.tools, SANDBOX_TOOLS});
}

}  // namespace

std::vector<HostEntry> ListHost(const std::string& directory) {
  std::vector<HostEntry> entries;
  std::error_code error;
  for (const fs::directory_entry& found : fs::directory_iterator(directory, error)) {
    std::error_code ignored;
    HostEntry entry;
    entry.name = found.path().filename().string();
    if (found.is_symlink(ignored)) {
      entry.link = fs::read_symlink(found.path(), ignored).string();
    }
    entry.directory = found.is_directory(ignored);
    entries.push_back(entry);
  }
  std::sort(entries.begin(), entries.end(),
            [](const HostEntry& a, const HostEntry& b) { return a.name < b.name; });
  return entries;
}

std::string SandboxSocket(const SandboxPlan& plan) {
  return plan.socket == plan.paths.BusSocket() ? std::string(DeskPaths::SANDBOX_RUN) + "/bus"
                                               : SANDBOX_SOCKET;
}

std::vector<std::string> SandboxArguments(const SandboxPlan& plan) {
  Arguments arguments = {"bwrap", "--die-with-parent", "--unshare-ipc", "--cap-drop", "ALL"};
  if (plan.infoFd >= 0) {
    Append(arguments, {"--info-fd", std::to_string(plan.infoFd)});
  }
  BindMachine(arguments, plan);
  BindTv(arguments, plan);
  // The directories that lead to the paths above are in memory; make them read-only too.
  Append(arguments, {"--remount-ro", "/", "--chdir", "/"});
  for (const std::string& variable : plan.environment) {
    const std::size_t equals = variable.find('=');
    Append(arguments, {"--setenv", variable.substr(0, equals), variable.substr(equals + 1)});
  }
  Append(arguments,
         {"--", std::string(SANDBOX_PROGRAMS) + "/" + fs::path(plan.program).filename().string()});
  return arguments;
}

}  // namespace desk::tv
