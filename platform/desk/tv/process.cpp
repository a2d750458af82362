// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/process.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <map>
#include <memory>

#include "common/desk_error.h"

extern "C" char** environ;

namespace desk {
namespace {

std::vector<std::string> MergeEnvironment(const std::vector<std::string>& changes) {
  std::map<std::string, std::string> merged;
  const auto put = [&merged](const std::string& entry) {
    merged[entry.substr(0, entry.find('='))] = entry;
  };
  for (char** entry = environ; *entry != nullptr; ++entry) {
    put(*entry);
  }
  // The service manager talks with desk-tv alone.
  for (const char* name : {"NOTIFY_SOCKET", "WATCHDOG_PID", "WATCHDOG_USEC"}) {
    merged.erase(name);
  }
  for (const std::string& entry : changes) {
    put(entry);
  }
  std::vector<std::string> result;
  for (const auto& entry : merged) {
    result.push_back(entry.second);
  }
  return result;
}

std::vector<char*> Pointers(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  for (std::string& text : strings) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

// All that the child needs, made before the fork: after it only calls that are safe in a signal
// handler are allowed, because other threads of desk-tv may hold locks.
struct ChildPlan {
  const char* program;
  char* const* arguments;
  char* const* environment;
  const char* directory;
  const std::vector<int>* keep;
  int input;
  int output;
  int report;  // gets errno when the program could not be run
  pid_t parent;
};

bool PrepareChild(const ChildPlan& plan) {
  setsid();
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != plan.parent) {
    _exit(127);
  }
  for (int number = 1; number < NSIG; ++number) {
    signal(number, SIG_DFL);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  for (const int fd : *plan.keep) {
    fcntl(fd, F_SETFD, 0);
  }
  return dup2(plan.input, STDIN_FILENO) >= 0 && dup2(plan.output, STDOUT_FILENO) >= 0 &&
         dup2(plan.output, STDERR_FILENO) >= 0 &&
         (plan.directory == nullptr || chdir(plan.directory) == 0);
}

[[noreturn]] void RunChild(const ChildPlan& plan) {
  if (PrepareChild(plan)) {
    execve(plan.program, plan.arguments, plan.environment);
  }
  const int reason = errno;
  [[maybe_unused]] const ssize_t written = write(plan.report, &reason, sizeof(reason));
  _exit(127);
}

class Descriptor {
 public:
  explicit Descriptor(int fd) : m_fd(fd) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Get() const { return m_fd; }
  void Close() {
    if (m_fd >= 0) {
      close(m_fd);
      m_fd = -1;
    }
  }

 private:
  int m_fd;
};

DeskError CannotStart(const std::string& program, int reason) {
  return DeskError(reason == ENOENT ? DeskError::NotFound : DeskError::Failed,
                   "cannot start " + program + ": " + std::strerror(reason));
}

std::string Locate(const std::string& program) {
  const std::string path = program.find('/') == std::string::npos ? FindProgram(program) : program;
  if (path.empty()) {
    throw DeskError(DeskError::NotFound, program + " is not on the PATH: install it");
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

pid_t StartProcess(const ProcessOrder& order) {
  const std::string program = Locate(order.arguments.at(0));
  std::vector<std::string> arguments = order.arguments;
  std::vector<std::string> environment = MergeEnvironment(order.environment);
  const std::vector<char*> argumentPointers = Pointers(arguments);
  const std::vector<char*> environmentPointers = Pointers(environment);
  const Descriptor input(open("/dev/null", O_RDONLY | O_CLOEXEC));
  const Descriptor output(OpenOutput(order.output));
  int ends[2] = {-1, -1};
  if (input.Get() < 0 || output.Get() < 0 || pipe2(ends, O_CLOEXEC) != 0) {
    throw CannotStart(program, errno);
  }
  const Descriptor readEnd(ends[0]);
  Descriptor writeEnd(ends[1]);
  const ChildPlan plan{program.c_str(),
                       argumentPointers.data(),
                       environmentPointers.data(),
                       order.directory.empty() ? nullptr : order.directory.c_str(),
                       &order.keep,
                       input.Get(),
                       output.Get(),
                       writeEnd.Get(),
                       getpid()};
  const pid_t pid = fork();
  if (pid == 0) {
    RunChild(plan);
  }
  if (pid < 0) {
    throw CannotStart(program, errno);
  }
  writeEnd.Close();
  int reason = 0;
  // The pipe closes without a byte when the program runs.
  if (read(readEnd.Get(), &reason, sizeof(reason)) > 0) {
    waitpid(pid, nullptr, 0);
    throw CannotStart(program, reason);
  }
  return pid;
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
  const std::unique_ptr<gchar, decltype(&g_free)> path(g_find_program_in_path(name.c_str()),
                                                       g_free);
  return path == nullptr ? std::string() : std::string(path.get());
}

}  // namespace desk
