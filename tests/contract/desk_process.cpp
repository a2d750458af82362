// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk_process.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace contract {
namespace {

// In the child, between fork and exec.
[[noreturn]] void Execute(const std::string& root, int readyFd, int otherFd) {
  close(otherFd);
  prctl(PR_SET_PDEATHSIG, SIGTERM);  // ends when the test crashes
  const std::string directory = desk::ProgramDirectory();
  const std::string program = directory + "/desk-tv";
  const std::string fd = std::to_string(readyFd);
  setenv("ORV_ENABLER", (directory + "/contract_desk_daemon").c_str(), 1);
  execl(program.c_str(), program.c_str(), "--root", root.c_str(), "--no-sandbox", "--offline",
        "--ready-fd", fd.c_str(), nullptr);
  std::perror(program.c_str());
  _exit(127);
}

std::string ReadAll(int fd) {
  std::string text;
  std::array<char, 256> part{};
  for (ssize_t size = 0; (size = read(fd, part.data(), part.size())) > 0;) {
    text.append(part.data(), static_cast<std::size_t>(size));
  }
  return text;
}

}  // namespace

DeskProcess::DeskProcess() : m_paths(m_directory / "tv") {
  Start();
}

DeskProcess::~DeskProcess() {
  kill(m_pid, SIGTERM);
  waitpid(m_pid, nullptr, 0);
}

void DeskProcess::Start() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) {
    throw std::runtime_error("no pipe");
  }
  m_pid = fork();
  if (m_pid == 0) {
    Execute(m_paths.Root(), ends[1], ends[0]);
  }
  close(ends[1]);
  const std::string told = ReadAll(ends[0]);
  close(ends[0]);
  if (told != "ready\n") {
    kill(m_pid, SIGTERM);
    waitpid(m_pid, nullptr, 0);
    throw std::runtime_error("no television: " + (told.empty() ? "desk-tv ended" : told));
  }
}

}  // namespace contract
