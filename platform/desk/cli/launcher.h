// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "desk/common/paths.h"

namespace desk::cli {

/// Path of desk-tv, which is in the same directory as this program. Throws Failure (Failed) when it
/// does not exist.
std::string FindDeskTv();

/// Result of a start in the background.
struct StartResult {
  enum class Kind { Ready, Failed, TimedOut };
  Kind kind = Kind::Failed;
  std::string reason;  ///< of Failed, as desk-tv gave it; empty when it gave none
  pid_t pid = -1;      ///< of the started process, which may have ended
};

/// Starts the program in a session of its own, not as a child of this process, with its output in
/// the desk's log. Waits until it writes "ready" or "failed: why" to the descriptor that it gets
/// with
/// --ready-fd. Throws Failure (Failed) when the start cannot be prepared.
StartResult StartInBackground(const DeskPaths& paths, const std::string& program,
                              const std::vector<std::string>& arguments,
                              std::chrono::milliseconds timeout);

/// Replaces this process by the program. Throws Failure (Failed) when that is impossible.
[[noreturn]] void BecomeProgram(const std::string& program,
                                const std::vector<std::string>& arguments);

/// Waits until the process has ended. False when it still runs after the timeout.
bool WaitForEnd(pid_t pid, std::chrono::milliseconds timeout);

}  // namespace desk::cli
