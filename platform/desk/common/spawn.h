// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace desk {

/// Owns a file descriptor and closes it.
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

/// What Spawn() starts. The process leads its own session, blocks no signal and has the default
/// action for each.
struct SpawnSpec {
  std::string program;                   ///< path of the executable
  std::vector<std::string> arguments;    ///< including argv[0]
  std::vector<std::string> environment;  ///< "NAME=value"; nothing is inherited
  std::string directory;                 ///< working directory; empty: the caller's
  std::vector<int> keep;                 ///< descriptors that stay open, with the same numbers
  int input = -1;                        ///< becomes standard input
  int output = -1;                       ///< becomes standard output and standard error
  /// True: the process outlives the caller and is not its child. False: it is the caller's child
  /// and gets SIGKILL when the calling thread ends.
  bool orphan = false;
};

struct Spawned {
  pid_t pid = -1;  ///< also set when the process could not execute the program; -1: no process
  int error = 0;   ///< errno of the step that failed; 0: the program is running
};

/// Blocks until the program has been executed or that has failed. After a failure there is no child
/// to wait for. Callable from any thread.
Spawned Spawn(const SpawnSpec& spec);

/// The null-terminated array that execve() takes. Valid until `strings` changes.
std::vector<char*> Pointers(const std::vector<std::string>& strings);

/// The environment of this process, "NAME=value" each.
std::vector<std::string> OwnEnvironment();

}  // namespace desk
