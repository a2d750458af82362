// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <ctime>

/// time(), and waits on condition variables with a time limit that is a duration. Only code that is
/// linked with the fake's options sees these; calls inside shared libraries do not.
namespace fake {

/// Stops time() at this value.
void SetTime(std::time_t now);
void AdvanceTime(std::time_t seconds);
void UseRealTime();

enum class Waits {
  Real,     ///< as without the fake
  TimeOut,  ///< time out at once
  Manual    ///< until a notification, or until AdvanceWaits() has passed the limit
};

/// For the waits that begin from now on. In the last two modes only the waits and AdvanceWaits()
/// move std::chrono's steady clock.
void SetWaits(Waits mode);
/// Lets time pass for the waits in manual mode. Those that reach their limit time out. Returns how
/// many.
std::size_t AdvanceWaits(unsigned int milliseconds);
/// The present number of threads that wait in manual mode.
std::size_t WaitingThreads();

}  // namespace fake
