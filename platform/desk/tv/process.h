// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace desk::tv {

/// How to start a process. It gets its own session and process group, default signal handling, and
/// SIGKILL when desk-tv ends.
struct ProcessSpec {
  std::vector<std::string>
      arguments;  ///< the first is the program; without "/" it is searched on the PATH
  std::vector<std::string> environment;  ///< "NAME=value", overrides desk-tv's environment
  std::string directory;                 ///< working directory; desk-tv's when empty
  std::string output;     ///< standard output and error are appended to this file; empty: discarded
  std::vector<int> keep;  ///< descriptors that stay open in the process
};

/// Returns the pid once the program runs. Throws DeskError (NotFound when there is no such program,
/// Failed otherwise). Main thread only: the process dies with the thread that started it.
pid_t StartProcess(const ProcessSpec& spec);

/// Calls the function once, from the main loop, with the status of waitpid when the process has
/// ended. Do not wait for the process elsewhere. Returns a number for UnwatchProcess; call that on
/// the main loop's thread, and not after the function was called.
unsigned WatchProcess(pid_t pid, std::function<void(int status)> function);
void UnwatchProcess(unsigned watch);

/// "exit status 3", "signal 11 (Segmentation fault)".
std::string DescribeStatus(int status);

/// Path of a program on the PATH; empty when it is not found.
std::string FindProgram(const std::string& name);

}  // namespace desk::tv
