// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Functions that only sleep.
#include <unistd.h>

#include <cerrno>

#include "desk/clock/fast_clock.h"

DESK_CLOCK_REPLACES int clock_nanosleep(clockid_t clock, int flags, const timespec* wanted,
                                        timespec* left) {
  if (!desk::IsScaled(clock)) {
    return DESK_CLOCK_ORIGINAL(clock_nanosleep)(clock, flags, wanted, left);
  }
  if ((flags & TIMER_ABSTIME) != 0) {
    const timespec real = desk::RealMoment(clock, *wanted);
    return DESK_CLOCK_ORIGINAL(clock_nanosleep)(clock, flags, &real, left);
  }
  if (wanted->tv_nsec < 0 || wanted->tv_nsec > 999999999 || wanted->tv_sec < 0) {
    return EINVAL;
  }
  const timespec real = desk::RealSpan(*wanted);
  timespec realLeft{};
  const int result = DESK_CLOCK_ORIGINAL(clock_nanosleep)(clock, flags, &real, &realLeft);
  if (result == EINTR && left != nullptr) {
    *left = desk::FastSpan(realLeft);
  }
  return result;
}

DESK_CLOCK_REPLACES int nanosleep(const timespec* wanted, timespec* left) {
  const int result = clock_nanosleep(CLOCK_REALTIME, 0, wanted, left);
  if (result != 0) {
    errno = result;
    return -1;
  }
  return 0;
}

DESK_CLOCK_REPLACES unsigned int sleep(unsigned int seconds) {
  timespec wanted{};
  wanted.tv_sec = seconds;
  timespec left{};
  if (clock_nanosleep(CLOCK_REALTIME, 0, &wanted, &left) == 0) {
    return 0;
  }
  return static_cast<unsigned int>(left.tv_sec) + (left.tv_nsec > 0 ? 1U : 0U);
}

DESK_CLOCK_REPLACES int usleep(useconds_t microseconds) {
  timespec wanted{};
  wanted.tv_sec = microseconds / 1000000;
  wanted.tv_nsec = static_cast<long>(microseconds % 1000000) * 1000;
  return nanosleep(&wanted, nullptr);
}
