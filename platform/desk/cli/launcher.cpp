// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "cli/launcher.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <thread>

#include "cli/failure.h"

namespace desk {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds LOOK_AGAIN(10);

Failure NoStart(const std::string& what) {
  return Failure(Exit::Failed, "cannot " + what + " (" + std::strerror(errno) + ")");
}

/// A descriptor with its owner.
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
    }
    m_fd = -1;
  }

 private:
  int m_fd;
};

std::vector<char*> Pointers(const std::vector<std::string>& words) {
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (const auto& word : words) {
    pointers.push_back(const_cast<char*>(word.c_str()));
  }
  pointers.push_back(nullptr);
  return pointers;
}

/// Opens the desk's log, making the directories on the way.
int OpenLog(const DeskPaths& paths) {
  std::error_code error;
  fs::create_directories(paths.Log(), error);
  const int fd = open(paths.TvLog().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (fd < 0) {
    throw NoStart("write to " + paths.TvLog());
  }
  return fd;
}

/// In the grandchild, which may only call what is safe after a fork.
[[noreturn]] void RunChild(char* const* words, int log, int ready) {
  setsid();
  const int null = open("/dev/null", O_RDONLY);
  dup2(null, STDIN_FILENO);
  dup2(log, STDOUT_FILENO);
  dup2(log, STDERR_FILENO);
  for (const int signal : {SIGPIPE, SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    std::signal(signal, SIG_DFL);
  }
  fcntl(ready, F_SETFD, 0);
  execv(words[0], words);
  constexpr char text[] = "failed: it cannot be executed\n";
  const ssize_t written = write(ready, text, sizeof text - 1);
  _exit(written < 0 ? 126 : 127);
}

/// Forks twice, so that the program is not a child of this process.
void Spawn(char* const* words, int log, int ready) {
  const pid_t child = fork();
  if (child < 0) {
    throw NoStart("start a process");
  }
  if (child == 0) {
    const pid_t grandchild = fork();
    if (grandchild != 0) {
      _exit(grandchild < 0 ? 1 : 0);
    }
    RunChild(words, log, ready);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
}

/// Everything up to a newline or the other side's end. False when the time is over before.
bool ReadLine(int fd, Clock::time_point end, std::string& line) {
  while (line.find('\n') == std::string::npos) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    pollfd wanted{fd, POLLIN, 0};
    const int count = poll(&wanted, 1, static_cast<int>(std::max<long>(0, left.count())));
    if (count == 0) {
      return false;
    }
    char buffer[1024];
    const ssize_t size = count < 0 ? -1 : read(fd, buffer, sizeof buffer);
    if (size < 0 && errno == EINTR) {
      continue;
    }
    if (size <= 0) {
      return true;
    }
    line.append(buffer, static_cast<size_t>(size));
  }
  return true;
}

StartResult Understood(const std::string& text) {
  const std::string line = text.substr(0, text.find('\n'));
  if (line == "ready") {
    return {StartResult::Kind::Ready, ""};
  }
  const std::string head = "failed: ";
  return {StartResult::Kind::Failed,
          line.compare(0, head.size(), head) == 0 ? line.substr(head.size()) : line};
}

}  // namespace

std::string FindDeskTv() {
  std::string program = ProgramDirectory() + "/desk-tv";
  if (access(program.c_str(), X_OK) != 0) {
    throw Failure(Exit::Failed, "there is no " + program + ": tv and desk-tv belong side by side");
  }
  return program;
}

StartResult StartInBackground(const DeskPaths& paths, const std::string& program,
                              const std::vector<std::string>& arguments,
                              std::chrono::seconds timeout) {
  int pipes[2];
  if (pipe2(pipes, O_CLOEXEC) != 0) {
    throw NoStart("make a pipe");
  }
  const Descriptor reader(pipes[0]);
  Descriptor writer(pipes[1]);
  const Descriptor log(OpenLog(paths));
  std::vector<std::string> words = {program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  words.insert(words.end(), {"--ready-fd", std::to_string(writer.Get())});
  Spawn(Pointers(words).data(), log.Get(), writer.Get());
  writer.Close();
  std::string line;
  if (!ReadLine(reader.Get(), Clock::now() + timeout, line)) {
    return {StartResult::Kind::TimedOut, ""};
  }
  return Understood(line);
}

void BecomeProgram(const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  execv(program.c_str(), Pointers(words).data());
  throw NoStart("run " + program);
}

bool WaitForEnd(pid_t pid, std::chrono::seconds timeout) {
  const auto end = Clock::now() + timeout;
  while (kill(pid, 0) == 0 || errno == EPERM) {
    if (Clock::now() >= end) {
      return false;
    }
    std::this_thread::sleep_for(LOOK_AGAIN);
  }
  return true;
}

}  // namespace desk
