// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace desk::tv {

/// How to start a process. It gets a session and process group of its own, the default signal
/// handling, and SIGKILL when desk-tv dies.
struct ProcessOrder {
  std::vector<std::string> arguments;    ///< the first is the program; without "/" it is looked up
  std::vector<std::string> environment;  ///< "NAME=value", over desk-tv's own environment
  std::string directory;                 ///< working directory; desk-tv's own when empty
  std::string output;     ///< file that standard output and error are appended to; empty: discarded
  std::vector<int> keep;  ///< descriptors that stay open in it
};

/// Returns the pid once the program runs. Throws DeskError (NotFound when there is no such program,
/// Failed otherwise). Main thread only: the process dies with the thread that started it.
pid_t StartProcess(const ProcessOrder& order);

/// Calls the function once, from the main loop, with the status of waitpid when the process has
/// ended; nobody else may wait for it. Returns a number for UnwatchProcess, which is then for the
/// main loop's thread, and not for a watch that has told.
unsigned WatchProcess(pid_t pid, std::function<void(int status)> function);
void UnwatchProcess(unsigned watch);

/// "exit status 3", "signal 11 (Segmentation fault)".
std::string DescribeStatus(int status);

/// Path of a program on the PATH; empty when there is none.
std::string FindProgram(const std::string& name);

}  // namespace desk::tv
