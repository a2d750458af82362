// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/spawn.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace desk {
namespace {

// Sent through a pipe from the forked processes to Spawn(), each in one write.
struct Message {
  enum class Kind { Pid, Error };
  Kind kind;
  int value;
};

// All that the child needs, prepared before fork(): other threads may hold locks at that moment, so
// the child may only make async-signal-safe calls.
struct ChildPlan {
  const char* program;
  char* const* arguments;
  char* const* environment;
  const char* directory;
  const std::vector<int>* keep;
  int input;
  int output;
  int report;
  bool orphan;
  pid_t parent;
};

void Report(const ChildPlan& plan, Message::Kind kind, int value) {
  const Message message{kind, value};
  [[maybe_unused]] const ssize_t written = write(plan.report, &message, sizeof(message));
}

void ResetSignals() {
  for (int number = 1; number < NSIG; ++number) {
    signal(number, SIG_DFL);
  }
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

bool PrepareChild(const ChildPlan& plan) {
  setsid();
  if (!plan.orphan) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != plan.parent) {
      _exit(127);
    }
  }
  ResetSignals();
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
  Report(plan, Message::Kind::Error, errno);
  _exit(127);
}

// The parent of an orphan. Exits at once, so that the orphan is not the caller's child.
[[noreturn]] void RunMiddle(const ChildPlan& plan) {
  const pid_t pid = fork();
  if (pid == 0) {
    RunChild(plan);
  }
  Report(plan, pid < 0 ? Message::Kind::Error : Message::Kind::Pid, pid < 0 ? errno : pid);
  _exit(0);
}

void Await(pid_t pid) {
  while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
  }
}

// Reads until the pipe is closed: execve() closes it, so no error message means success.
void Listen(int fd, Spawned& spawned) {
  Message message{};
  for (ssize_t size = 0; (size = read(fd, &message, sizeof(message))) != 0;) {
    if (size == sizeof(message)) {
      (message.kind == Message::Kind::Pid ? spawned.pid : spawned.error) = message.value;
    } else if (errno != EINTR) {
      return;
    }
  }
}

Spawned Failed() {
  Spawned spawned;
  spawned.error = errno;
  return spawned;
}

}  // namespace

void Descriptor::Close() {
  if (m_fd >= 0) {
    close(m_fd);
    m_fd = -1;
  }
}

std::vector<char*> Pointers(const std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  pointers.reserve(strings.size() + 1);
  for (const std::string& text : strings) {
    pointers.push_back(const_cast<char*>(text.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> OwnEnvironment() {
  std::vector<std::string> entries;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    entries.emplace_back(*entry);
  }
  return entries;
}

Spawned Spawn(const SpawnSpec& spec) {
  const std::vector<char*> arguments = Pointers(spec.arguments);
  const std::vector<char*> environment = Pointers(spec.environment);
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return Failed();
  }
  const Descriptor readEnd(ends[0]);
  Descriptor writeEnd(ends[1]);
  const ChildPlan plan{
      spec.program.c_str(), arguments.data(),
      environment.data(),   spec.directory.empty() ? nullptr : spec.directory.c_str(),
      &spec.keep,           spec.input,
      spec.output,          writeEnd.Get(),
      spec.orphan,          getpid()};
  Spawned spawned;
  const pid_t child = fork();
  if (child < 0) {
    return Failed();
  }
  if (child == 0) {
    spec.orphan ? RunMiddle(plan) : RunChild(plan);
  }
  writeEnd.Close();
  if (spec.orphan) {
    Await(child);
  } else {
    spawned.pid = child;
  }
  Listen(readEnd.Get(), spawned);
  if (!spec.orphan && spawned.error != 0) {
    Await(child);
  }
  return spawned;
}

}  // namespace desk
