// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// GLib's timers and the framework's alarms. None fires by itself.
namespace fake {

struct Timer {
  unsigned int id = 0;
  unsigned int intervalMs = 0;
  bool inSeconds = false;  ///< made by g_timeout_add_seconds()
  int (*function)(void*) = nullptr;
  void* data = nullptr;
};

/// The timers that are set now, in the order of their ids. Ids begin with 1.
std::vector<Timer> Timers();
std::vector<Timer> TimersOf(unsigned int intervalMs);
/// Calls the timer's function on the calling thread and removes the timer when that returns 0, as
/// the main loop does. False when there is no such timer.
bool FireTimer(unsigned int id);
/// Fires each timer of the interval once. Returns how many.
std::size_t FireTimersOf(unsigned int intervalMs);
/// Lets the time pass for the timers: each fires when and as often as its interval has gone by, in
/// the order of the moments, on the calling thread. Returns how many fired.
std::size_t AdvanceTimers(unsigned int milliseconds);

struct Alarm {
  unsigned long id = 0;
  std::string task;
  unsigned int type = 0;
  int periodMs = 0;
  int left = 0;  ///< events still to come; 0 for no end
};

/// Alarms that run and have events to come.
std::vector<Alarm> Alarms();
/// Lets each alarm of this event type post once. Returns how many did.
std::size_t FireAlarms(unsigned int type);

}  // namespace fake
