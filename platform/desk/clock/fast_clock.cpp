// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/clock/fast_clock.h"

#include <dlfcn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace desk {
namespace {

// Wide enough for the latest time that a program can name, multiplied by the speed.
__extension__ typedef __int128 Nanoseconds;
constexpr Nanoseconds SECOND = 1000000000;

Nanoseconds Count(const timespec& time) {
  return static_cast<Nanoseconds>(time.tv_sec) * SECOND + time.tv_nsec;
}

timespec Split(Nanoseconds count) {
  Nanoseconds seconds = count / SECOND;
  Nanoseconds rest = count % SECOND;
  if (rest < 0) {
    rest += SECOND;
    --seconds;
  }
  timespec time{};
  time.tv_sec = static_cast<time_t>(seconds);
  time.tv_nsec = static_cast<long>(rest);
  return time;
}

long long NumberFrom(const char* variable, long long otherwise) {
  const char* text = std::getenv(variable);
  return text == nullptr ? otherwise : std::strtoll(text, nullptr, 10);
}

// A moment on both sides: what the machine's clock and the program's clock showed then.
struct Moment {
  Nanoseconds machine = 0;
  Nanoseconds program = 0;
};

Moment SameAt(Nanoseconds time) {
  return {time, time};
}

// Where the program's clocks leave the machine's. Read once at the first use, which is before main.
struct Base {
  Base() {
    speed = std::max(NumberFrom("DESK_CLOCK_SPEED", 1), 1LL);
    const auto now = static_cast<long long>(Count(RealNow(CLOCK_REALTIME)));
    realtime.machine = NumberFrom("DESK_CLOCK_SINCE", now);
    realtime.program = NumberFrom("DESK_CLOCK_BASE", static_cast<long long>(realtime.machine));
    monotonic = SameAt(Count(RealNow(CLOCK_MONOTONIC)));
    boottime = SameAt(Count(RealNow(CLOCK_BOOTTIME)));
    raw = SameAt(Count(RealNow(CLOCK_MONOTONIC_RAW)));
  }

  const Moment& Of(clockid_t clock) const {
    switch (clock) {
      case CLOCK_MONOTONIC:
      case CLOCK_MONOTONIC_COARSE:
        return monotonic;
      case CLOCK_BOOTTIME:
        return boottime;
      case CLOCK_MONOTONIC_RAW:
        return raw;
      default:
        return realtime;
    }
  }

  Nanoseconds speed = 1;
  Moment realtime;
  Moment monotonic;
  Moment boottime;
  Moment raw;
};

const Base& TheBase() {
  static const Base base;
  return base;
}

Nanoseconds DivideUp(Nanoseconds count, Nanoseconds by) {
  return (count + by - 1) / by;
}

__attribute__((constructor)) void StartClock() {
  TheBase();
}

}  // namespace

bool IsScaled(clockid_t clock) {
  switch (clock) {
    case CLOCK_REALTIME:
    case CLOCK_REALTIME_COARSE:
    case CLOCK_MONOTONIC:
    case CLOCK_MONOTONIC_COARSE:
    case CLOCK_MONOTONIC_RAW:
    case CLOCK_BOOTTIME:
      return true;
    default:
      return false;
  }
}

timespec RealNow(clockid_t clock) {
  timespec now{};
  syscall(SYS_clock_gettime, clock, &now);
  return now;
}

timespec FastNow(clockid_t clock) {
  const Moment& base = TheBase().Of(clock);
  return Split(base.program + (Count(RealNow(clock)) - base.machine) * TheBase().speed);
}

timespec RealMoment(clockid_t clock, const timespec& fast) {
  const Moment& base = TheBase().Of(clock);
  const Nanoseconds span = Count(fast) - base.program;
  const Nanoseconds real = base.machine + (span > 0 ? DivideUp(span, TheBase().speed) : span);
  return Split(real < 0 ? 0 : real);
}

timespec RealSpan(const timespec& fast) {
  return Split(DivideUp(Count(fast), TheBase().speed));
}

timespec FastSpan(const timespec& real) {
  return Split(Count(real) * TheBase().speed);
}

timespec FromMilliseconds(long milliseconds) {
  return Split(static_cast<Nanoseconds>(milliseconds) * (SECOND / 1000));
}

long ToMilliseconds(const timespec& span) {
  return static_cast<long>(DivideUp(Count(span), SECOND / 1000));
}

void* FindOriginal(const char* name) {
  return dlsym(RTLD_NEXT, name);
}

}  // namespace desk
