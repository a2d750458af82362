// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

/// One run of a new daemon in a process of its own.
namespace fault {

struct Fault {
  std::string name;  ///< a call as in fake::Calls(), or an operation of the store
  int result = 0;
  int times = 1;
  int after = 0;
};

enum class StoreState {
  Free,
  ReadOnly,  ///< from before the start of the daemon
  Locked     ///< by another program, while the path runs
};

struct Request {
  std::string path;
  std::optional<Fault> fault;
  /// Only starts the daemon, without a fault, with the directories that the previous run left.
  bool afterRestart = false;
  /// Has no effect on a path that is the start itself.
  StoreState store = StoreState::Free;
};

struct Report {
  bool reachedMainLoop = false;
  std::map<std::string, int> calls;    ///< number of uses on the path, by name
  std::vector<std::string> callTexts;  ///< the platform calls on the path, in order
  std::vector<std::string> failed;     ///< the texts of the calls that the fault made fail
  std::vector<std::string> answers;    ///< the next log text of each failed call's thread
  int failures = 0;                    ///< caused by the fault, including those of the store
  std::vector<std::string> log;        ///< texts of the path, without heads
  std::map<std::string, int> handles;  ///< open after the path, minus those open before it
  std::vector<std::string> problems;   ///< what did not work after the fault was removed
  std::string end;                     ///< how the process ended; empty for a normal end
};

/// Runs the request and waits for its end. The calling process must not have other threads.
Report RunInChild(const Request& request);

/// In a process that RunInChild() started: carries out the request in its arguments and exits.
/// Returns in any other process.
void CarryOutTheRequest(int argc, char** argv);

/// "vconf_get_int returns -1 at use 2 and later"
std::string ToText(const Fault& fault);

}  // namespace fault
