// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

/// One journey of a fresh daemon in a process of its own.
namespace fault {

struct Fault {
  std::string name;  ///< of a call as in fake::Calls(), or of an operation of the store
  int result = 0;
  int times = 1;
  int after = 0;
};

enum class StoreState {
  kFree,
  kReadOnly,  ///< since before the daemon started
  kLocked     ///< by another program, for as long as the road takes
};

struct Order {
  std::string road;
  std::optional<Fault> fault;
  /// Only starts the daemon, without a fault, on what the journey before left in its directories.
  bool afterRestart = false;
  /// Not on a road that is the start itself.
  StoreState store = StoreState::kFree;
};

struct Report {
  bool reachedMainLoop = false;
  std::map<std::string, int> calls;    ///< name to the number of its uses on the road
  std::vector<std::string> callTexts;  ///< of the platform's calls on the road, in order
  std::vector<std::string> failed;     ///< the texts of those among them that failed on purpose
  std::vector<std::string> answers;    ///< what the threads of those calls logged next
  int failures = 0;                    ///< on purpose, those of the store included
  std::vector<std::string> log;        ///< of the road, without heads
  std::map<std::string, int> handles;  ///< open at the end of the road, less those at its begin
  std::vector<std::string> problems;   ///< what did not work when the fault was gone
  std::string end;                     ///< how the process ended, when not as it should
};

/// Runs the order and waits for its end. The calling process must not have other threads.
Report RunInChild(const Order& order);

/// The process is one that RunInChild() started: carries out the order of its arguments and ends.
/// Returns when it is not.
void CarryOutTheOrder(int argc, char** argv);

/// "vconf_get_int gives -1 at use 2 and ever after"
std::string ToText(const Fault& fault);

}  // namespace fault
