// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/process.h"

#include <fcntl.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstring>
#include <map>

#include "desk/common/desk_error.h"
#include "desk/common/gio_ptr.h"
#include "desk/common/spawn.h"

namespace desk::tv {
namespace {

std::vector<std::string> MergeEnvironment(const std::vector<std::string>& changes) {
  std::map<std::string, std::string> merged;
  const auto put = [&merged](const std::string& entry) {
    merged[entry.substr(0, entry.find('='))] = entry;
  };
  for (const std::string& entry : OwnEnvironment()) {
    put(entry);
  }
  // These are for desk-tv itself, which is the service manager's process.
  for (const char* name : {"NOTIFY_SOCKET", "WATCHDOG_PID", "WATCHDOG_USEC"}) {
    merged.erase(name);
  }
  for (const std::string& entry : changes) {
    put(entry);
  }
  std::vector<std::string> result;
  result.reserve(merged.size());
  for (const auto& entry : merged) {
    result.push_back(entry.second);
  }
  return result;
}

DeskError CannotStart(const std::string& program, int reason) {
  return DeskError(reason == ENOENT ? DeskError::NOT_FOUND : DeskError::FAILED,
                   "cannot start " + program + ": " + std::strerror(reason));
}

std::string Locate(const std::string& program) {
  std::string path = program.find('/') == std::string::npos ? FindProgram(program) : program;
  if (path.empty()) {
    throw DeskError(DeskError::NOT_FOUND, program + " is not on the PATH: install it");
  }
  return path;
}

int OpenOutput(const std::string& path) {
  return path.empty() ? open("/dev/null", O_WRONLY | O_CLOEXEC)
                      : open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
}

struct Watch {
  std::function<void(int)> function;
};

}  // namespace

pid_t StartProcess(const ProcessSpec& spec) {
  SpawnSpec spawn;
  spawn.program = Locate(spec.arguments.at(0));
  spawn.arguments = spec.arguments;
  spawn.environment = MergeEnvironment(spec.environment);
  spawn.directory = spec.directory;
  spawn.keep = spec.keep;
  const Descriptor input(open("/dev/null", O_RDONLY | O_CLOEXEC));
  const Descriptor output(OpenOutput(spec.output));
  if (input.Get() < 0 || output.Get() < 0) {
    throw CannotStart(spawn.program, errno);
  }
  spawn.input = input.Get();
  spawn.output = output.Get();
  const Spawned spawned = Spawn(spawn);
  if (spawned.error != 0) {
    throw CannotStart(spawn.program, spawned.error);
  }
  return spawned.pid;
}

unsigned WatchProcess(pid_t pid, std::function<void(int status)> function) {
  return g_child_watch_add_full(
      G_PRIORITY_DEFAULT, pid,
      [](GPid, gint status, gpointer data) { static_cast<Watch*>(data)->function(status); },
      new Watch{std::move(function)}, [](gpointer data) { delete static_cast<Watch*>(data); });
}

void UnwatchProcess(unsigned watch) {
  g_source_remove(watch);
}

std::string DescribeStatus(int status) {
  if (WIFSIGNALED(status)) {
    const int number = WTERMSIG(status);
    return "signal " + std::to_string(number) + " (" + strsignal(number) + ")";
  }
  return "exit status " + std::to_string(WEXITSTATUS(status));
}

std::string FindProgram(const std::string& name) {
  const TextPtr path(g_find_program_in_path(name.c_str()));
  return path == nullptr ? std::string() : std::string(path.get());
}

}  // namespace desk::tv
