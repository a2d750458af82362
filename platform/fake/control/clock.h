// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <ctime>

/// time(), and waits on condition variables with a time limit that is a duration. Only code that is
/// linked with the fake's options sees these; calls inside shared libraries do not.
namespace fake {

/// time() gives this from now on, and stands still.
void SetTime(std::time_t now);
void AdvanceTime(std::time_t seconds);
void UseRealTime();

enum class Waits {
  kReal,     ///< as without the fake
  kTimeOut,  ///< the time limit is over at once
  kManual    ///< until a notification, or until AdvanceWaits() passed the limit
};

/// For the waits that begin from now on. In the two modes that are not real std::chrono's steady
/// clock stands still but for what the waits and AdvanceWaits() add.
void SetWaits(Waits mode);
/// Lets the time pass for waits in manual mode; those whose limit is reached have timed out when
/// they return. Returns how many have.
std::size_t AdvanceWaits(unsigned int milliseconds);
/// Threads that wait in manual mode now.
std::size_t WaitingThreads();

}  // namespace fake
