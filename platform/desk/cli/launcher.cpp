// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/launcher.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <thread>

#include "desk/cli/failure.h"
#include "desk/common/spawn.h"

namespace desk::cli {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds LOOK_AGAIN(10);

Failure NoStart(const std::string& what) {
  return Failure(Exit::Failed, "cannot " + what + " (" + std::strerror(errno) + ")");
}

/// Opens the desk's log, and creates its directory if needed.
int OpenLog(const DeskPaths& paths) {
  std::error_code error;
  fs::create_directories(paths.Log(), error);
  const int fd = open(paths.TvLog().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (fd < 0) {
    throw NoStart("write to " + paths.TvLog());
  }
  return fd;
}

/// Reads up to a newline or the end of the stream. False when the time is over before that.
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

void Understand(const std::string& text, StartResult& result) {
  const std::string line = text.substr(0, text.find('\n'));
  const std::string head = "failed: ";
  result.kind = line == "ready" ? StartResult::Kind::Ready : StartResult::Kind::Failed;
  if (result.kind == StartResult::Kind::Failed) {
    result.reason = line.compare(0, head.size(), head) == 0 ? line.substr(head.size()) : line;
  }
}

}  // namespace

std::string FindDeskTv() {
  std::string program = ProgramDirectory() + "/desk-tv";
  if (access(program.c_str(), X_OK) != 0) {
    throw Failure(Exit::Failed,
                  program + " does not exist: install desk-tv in the same directory as tv");
  }
  return program;
}

StartResult StartInBackground(const DeskPaths& paths, const std::string& program,
                              const std::vector<std::string>& arguments,
                              std::chrono::milliseconds timeout) {
  int pipes[2];
  if (pipe2(pipes, O_CLOEXEC) != 0) {
    throw NoStart("make a pipe");
  }
  const Descriptor reader(pipes[0]);
  Descriptor writer(pipes[1]);
  const Descriptor log(OpenLog(paths));
  const Descriptor null(open("/dev/null", O_RDONLY | O_CLOEXEC));
  SpawnSpec spec;
  spec.program = program;
  spec.arguments = {program};
  spec.arguments.insert(spec.arguments.end(), arguments.begin(), arguments.end());
  spec.arguments.insert(spec.arguments.end(), {"--ready-fd", std::to_string(writer.Get())});
  spec.environment = OwnEnvironment();
  spec.keep = {writer.Get()};
  spec.input = null.Get();
  spec.output = log.Get();
  spec.orphan = true;
  const Spawned spawned = Spawn(spec);
  if (spawned.error != 0) {
    return {StartResult::Kind::Failed,
            std::string("it cannot be executed (") + std::strerror(spawned.error) + ")",
            spawned.pid};
  }
  writer.Close();
  std::string line;
  StartResult result{StartResult::Kind::TimedOut, "", spawned.pid};
  if (ReadLine(reader.Get(), Clock::now() + timeout, line)) {
    Understand(line, result);
  }
  return result;
}

void BecomeProgram(const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  execv(program.c_str(), Pointers(words).data());
  throw NoStart("run " + program);
}

bool WaitForEnd(pid_t pid, std::chrono::milliseconds timeout) {
  const auto end = Clock::now() + timeout;
  while (kill(pid, 0) == 0 || errno == EPERM) {
    if (Clock::now() >= end) {
      return false;
    }
    std::this_thread::sleep_for(LOOK_AGAIN);
  }
  return true;
}

}  // namespace desk::cli
