// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// GLib's timers and the framework's alarms. They fire only by the functions below.
namespace fake {

struct Timer {
  unsigned int id = 0;
  unsigned int intervalMs = 0;
  bool inSeconds = false;  ///< created by g_timeout_add_seconds()
  int (*function)(void*) = nullptr;
  void* data = nullptr;
};

/// The present timers, in the order of their ids, which begin with 1.
std::vector<Timer> Timers();
std::vector<Timer> TimersOf(unsigned int intervalMs);
/// Calls the timer's function on the calling thread and, like the main loop, removes the timer when
/// the function returns 0. False when the timer does not exist.
bool FireTimer(unsigned int id);
/// Fires each timer of the interval once. Returns how many.
std::size_t FireTimersOf(unsigned int intervalMs);
/// Lets time pass for the timers: each fires as often as its interval has passed, in the order of
/// time, on the calling thread. Returns how many fired.
std::size_t AdvanceTimers(unsigned int milliseconds);

struct Alarm {
  unsigned long id = 0;
  std::string task;
  unsigned int type = 0;
  int periodMs = 0;
  int left = 0;  ///< remaining events; 0: without limit
};

/// The running alarms that have events left.
std::vector<Alarm> Alarms();
/// Makes each alarm of this event type post once. Returns how many did.
std::size_t FireAlarms(unsigned int type);

}  // namespace fake
