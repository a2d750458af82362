// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Functions that read a clock.
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>

#include "desk/clock/fast_clock.h"

DESK_CLOCK_REPLACES int clock_gettime(clockid_t clock, timespec* now) noexcept {
  if (!desk::IsScaled(clock)) {
    return DESK_CLOCK_ORIGINAL(clock_gettime)(clock, now);
  }
  *now = desk::FastNow(clock);
  return 0;
}

DESK_CLOCK_REPLACES int gettimeofday(timeval* __restrict now, void* __restrict) noexcept {
  const timespec time = desk::FastNow(CLOCK_REALTIME);
  now->tv_sec = time.tv_sec;
  now->tv_usec = time.tv_nsec / 1000;
  return 0;
}

DESK_CLOCK_REPLACES time_t time(time_t* now) noexcept {
  const time_t seconds = desk::FastNow(CLOCK_REALTIME).tv_sec;
  if (now != nullptr) {
    *now = seconds;
  }
  return seconds;
}
