// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "common/paths.h"

namespace desk {

/// desk-tv, which lies beside this program. Throws Failure (Failed) when it is not there.
std::string FindDeskTv();

/// What came of a start in the background.
struct StartResult {
  enum class Kind { Ready, Failed, TimedOut };
  Kind kind = Kind::Failed;
  std::string reason;  ///< of Failed, as desk-tv told it; empty when it ended without a word
  pid_t pid = -1;      ///< of the process that was started, which may have ended
};

/// Starts the program as a process of its own session, nobody's child, with its output in the
/// desk's log, and waits for its first word: it is told to write "ready" or "failed: why" to the
/// descriptor given with --ready-fd. Throws Failure (Failed) when it cannot be started at all.
StartResult StartInBackground(const DeskPaths& paths, const std::string& program,
                              const std::vector<std::string>& arguments,
                              std::chrono::milliseconds timeout);

/// Turns this process into the program. Returns only by throwing Failure (Failed).
[[noreturn]] void BecomeProgram(const std::string& program,
                                const std::vector<std::string>& arguments);

/// Waits until there is no such process any more. False when it is still there afterwards.
bool WaitForEnd(pid_t pid, std::chrono::milliseconds timeout);

}  // namespace desk
