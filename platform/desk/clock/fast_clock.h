// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ctime>

/// Marks a function that replaces the C library's function of the same name.
#define DESK_CLOCK_REPLACES extern "C" __attribute__((visibility("default")))

namespace desk {

/// Clocks that run $DESK_CLOCK_SPEED times faster than the machine's from the start of the process.
/// The time of day showed $DESK_CLOCK_BASE when the machine's showed $DESK_CLOCK_SINCE (nanoseconds
/// since 1970), so that it continues when the program restarts; without these variables both times
/// of day are equal at the start of the process. Everything is callable from any thread, also
/// before main.

/// False for clocks that show neither the time of day nor the time since boot, such as processor
/// time; these are not changed.
bool IsScaled(clockid_t clock);

/// The machine's own time.
timespec RealNow(clockid_t clock);
/// The program's time.
timespec FastNow(clockid_t clock);
/// The machine's time at which the program's clock shows the given time.
timespec RealMoment(clockid_t clock, const timespec& fast);

/// A span of the program's time as a span of the machine's, rounded up, and the reverse.
timespec RealSpan(const timespec& fast);
timespec FastSpan(const timespec& real);

timespec FromMilliseconds(long milliseconds);
/// Rounded up.
long ToMilliseconds(const timespec& span);

/// The C library's function of that name, which the function here replaces.
template <typename Function>
Function* Original(Function*, const char* name);

void* FindOriginal(const char* name);

template <typename Function>
Function* Original(Function*, const char* name) {
  return reinterpret_cast<Function*>(FindOriginal(name));
}

}  // namespace desk

/// The C library's function, looked up once.
#define DESK_CLOCK_ORIGINAL(name)                                 \
  ([]() {                                                         \
    static auto* const original = desk::Original(&::name, #name); \
    return original;                                              \
  }())
