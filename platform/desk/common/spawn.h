// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace desk {

/// A descriptor with its owner.
class Descriptor {
 public:
  explicit Descriptor(int fd) : m_fd(fd) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Get() const { return m_fd; }
  void Close();

 private:
  int m_fd;
};

/// How a process begins. It leads a session of its own, and finds its signals as a program expects
/// them.
struct SpawnSpec {
  std::string program;                   ///< path
  std::vector<std::string> arguments;    ///< the first is the program's name
  std::vector<std::string> environment;  ///< all of it
  std::string directory;                 ///< working directory; the caller's when empty
  std::vector<int> keep;                 ///< descriptors that stay open under their numbers
  int input = -1;                        ///< becomes standard input
  int output = -1;                       ///< becomes standard output and standard error
  bool orphan = false;  ///< nobody's child, and outlives the caller; else the caller's child, which
                        ///< gets SIGKILL when the calling thread ends
};

struct Spawned {
  pid_t pid = -1;  ///< of the process, also of one that could not run the program
  int error = 0;   ///< errno when the program does not run
};

/// Returns once the program runs, or is known not to; then nothing is left to be waited for.
Spawned Spawn(const SpawnSpec& spec);

/// Null-terminated, as exec takes them. Good as long as the strings stay as they are.
std::vector<char*> Pointers(const std::vector<std::string>& strings);

/// This process's own, "NAME=value" each.
std::vector<std::string> OwnEnvironment();

}  // namespace desk
