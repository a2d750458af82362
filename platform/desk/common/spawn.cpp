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

// What the processes between here and the program tell, each in one write.
struct Word {
  enum class Kind { Pid, Error };
  Kind kind;
  int value;
};

// All that the child needs, made before the fork: after it only calls that are safe in a signal
// handler are allowed, because other threads may hold locks.
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

void Report(const ChildPlan& plan, Word::Kind kind, int value) {
  const Word word{kind, value};
  [[maybe_unused]] const ssize_t written = write(plan.report, &word, sizeof(word));
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
  Report(plan, Word::Kind::Error, errno);
  _exit(127);
}

// Stands between the caller and an orphan, and ends at once.
[[noreturn]] void RunMiddle(const ChildPlan& plan) {
  const pid_t pid = fork();
  if (pid == 0) {
    RunChild(plan);
  }
  Report(plan, pid < 0 ? Word::Kind::Error : Word::Kind::Pid, pid < 0 ? errno : pid);
  _exit(0);
}

void Await(pid_t pid) {
  while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {
  }
}

// The pipe closes without a word of an error when the program runs.
void Listen(int fd, Spawned& spawned) {
  Word word{};
  for (ssize_t size = 0; (size = read(fd, &word, sizeof(word))) != 0;) {
    if (size == sizeof(word)) {
      (word.kind == Word::Kind::Pid ? spawned.pid : spawned.error) = word.value;
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
