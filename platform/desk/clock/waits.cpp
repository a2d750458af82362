// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Functions that wait for something with a timeout.
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/epoll.h>
#include <sys/select.h>

#include "desk/clock/fast_clock.h"

namespace {

// Null, which means no timeout, stays null.
const timespec* RealSpanOf(const timespec* fast, timespec* storage) {
  if (fast == nullptr) {
    return nullptr;
  }
  *storage = desk::RealSpan(*fast);
  return storage;
}

// The C library stores the clock of a condition variable in the second bit of this member.
clockid_t ClockOf(const pthread_cond_t* condition) {
  constexpr unsigned MONOTONIC_FLAG = 2;
  return (condition->__data.__wrefs & MONOTONIC_FLAG) != 0 ? CLOCK_MONOTONIC : CLOCK_REALTIME;
}

}  // namespace

// Milliseconds are too coarse for a short timeout divided by the speed.
DESK_CLOCK_REPLACES int poll(pollfd* descriptors, nfds_t count, int milliseconds) {
  if (milliseconds <= 0) {
    return DESK_CLOCK_ORIGINAL(poll)(descriptors, count, milliseconds);
  }
  const timespec real = desk::RealSpan(desk::FromMilliseconds(milliseconds));
  return DESK_CLOCK_ORIGINAL(ppoll)(descriptors, count, &real, nullptr);
}

DESK_CLOCK_REPLACES int ppoll(pollfd* descriptors, nfds_t count, const timespec* limit,
                              const sigset_t* mask) {
  timespec real{};
  return DESK_CLOCK_ORIGINAL(ppoll)(descriptors, count, RealSpanOf(limit, &real), mask);
}

DESK_CLOCK_REPLACES int epoll_wait(int fd, epoll_event* events, int count, int milliseconds) {
  return epoll_pwait(fd, events, count, milliseconds, nullptr);
}

DESK_CLOCK_REPLACES int epoll_pwait(int fd, epoll_event* events, int count, int milliseconds,
                                    const sigset_t* mask) {
  const int real = milliseconds <= 0 ? milliseconds
                                     : static_cast<int>(desk::ToMilliseconds(
                                           desk::RealSpan(desk::FromMilliseconds(milliseconds))));
  return DESK_CLOCK_ORIGINAL(epoll_pwait)(fd, events, count, real, mask);
}

DESK_CLOCK_REPLACES int pselect(int count, fd_set* __restrict in, fd_set* __restrict out,
                                fd_set* __restrict except, const timespec* __restrict limit,
                                const sigset_t* __restrict mask) {
  timespec real{};
  return DESK_CLOCK_ORIGINAL(pselect)(count, in, out, except, RealSpanOf(limit, &real), mask);
}

DESK_CLOCK_REPLACES int select(int count, fd_set* __restrict in, fd_set* __restrict out,
                               fd_set* __restrict except, timeval* __restrict limit) {
  if (limit == nullptr) {
    return DESK_CLOCK_ORIGINAL(pselect)(count, in, out, except, nullptr, nullptr);
  }
  timespec span{};
  span.tv_sec = limit->tv_sec;
  span.tv_nsec = limit->tv_usec * 1000;
  const timespec real = desk::RealSpan(span);
  return DESK_CLOCK_ORIGINAL(pselect)(count, in, out, except, &real, nullptr);
}

DESK_CLOCK_REPLACES int pthread_cond_timedwait(pthread_cond_t* __restrict condition,
                                               pthread_mutex_t* __restrict mutex,
                                               const timespec* __restrict until) {
  const timespec real = desk::RealMoment(ClockOf(condition), *until);
  return DESK_CLOCK_ORIGINAL(pthread_cond_timedwait)(condition, mutex, &real);
}

DESK_CLOCK_REPLACES int pthread_cond_clockwait(pthread_cond_t* __restrict condition,
                                               pthread_mutex_t* __restrict mutex, clockid_t clock,
                                               const timespec* __restrict until) {
  const timespec real = desk::RealMoment(clock, *until);
  return DESK_CLOCK_ORIGINAL(pthread_cond_clockwait)(condition, mutex, clock, &real);
}

DESK_CLOCK_REPLACES int sem_timedwait(sem_t* __restrict semaphore,
                                      const timespec* __restrict until) {
  const timespec real = desk::RealMoment(CLOCK_REALTIME, *until);
  return DESK_CLOCK_ORIGINAL(sem_timedwait)(semaphore, &real);
}

DESK_CLOCK_REPLACES int sem_clockwait(sem_t* __restrict semaphore, clockid_t clock,
                                      const timespec* __restrict until) {
  const timespec real = desk::RealMoment(clock, *until);
  return DESK_CLOCK_ORIGINAL(sem_clockwait)(semaphore, clock, &real);
}
