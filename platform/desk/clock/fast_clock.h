// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ctime>

/// Makes a function the one that the program gets instead of the C library's.
#define DESK_CLOCK_REPLACES extern "C" __attribute__((visibility("default")))

namespace desk {

/// Time that runs $DESK_CLOCK_SPEED times faster than the machine's. The time of day does so since
/// $DESK_CLOCK_SINCE (nanoseconds of the machine's time of day), so that it goes on over the
/// restarts of a program; it and all other clocks otherwise since the start of the process. Until
/// then both tell the same. Everything is callable from any thread, also before main.

/// False for clocks that are no time of day and no time since boot, such as processor time; those
/// are left alone.
bool IsScaled(clockid_t clock);

/// The machine's own time.
timespec RealNow(clockid_t clock);
/// What the program is told that the time is.
timespec FastNow(clockid_t clock);
/// The machine's time at which the program's clock shows the given one.
timespec RealMoment(clockid_t clock, const timespec& fast);

/// A span of the program's time in the machine's, rounded up, and the other way round.
timespec RealSpan(const timespec& fast);
timespec FastSpan(const timespec& real);

timespec FromMilliseconds(long milliseconds);
/// Rounded up.
long ToMilliseconds(const timespec& span);

/// The C library's own function of that name, behind the one that stands in for it.
template <typename Function>
Function* Original(Function*, const char* name);

void* FindOriginal(const char* name);

template <typename Function>
Function* Original(Function*, const char* name) {
  return reinterpret_cast<Function*>(FindOriginal(name));
}

}  // namespace desk

/// The original of a function, looked up once.
#define DESK_CLOCK_ORIGINAL(name)                                 \
  ([]() {                                                         \
    static auto* const original = desk::Original(&::name, #name); \
    return original;                                              \
  }())
