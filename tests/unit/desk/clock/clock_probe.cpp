// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// clock_probe WHAT: waits for WHAT by its own clock and prints, in milliseconds, how long that took
// by the machine's clock and by its own.
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <functional>
#include <map>
#include <mutex>
#include <string>

namespace {

constexpr long WAIT_MS = 20000;

double Milliseconds(const timespec& time) {
  return static_cast<double>(time.tv_sec) * 1000.0 + static_cast<double>(time.tv_nsec) / 1e6;
}

double MachineNow() {
  timespec now{};
  syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
  return Milliseconds(now);
}

double OwnNow(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  return Milliseconds(now);
}

timespec Span() {
  return {WAIT_MS / 1000, 0};
}

timespec Until(clockid_t clock) {
  timespec now{};
  clock_gettime(clock, &now);
  now.tv_sec += WAIT_MS / 1000;
  return now;
}

void WaitForCondition(clockid_t clock) {
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, clock);
  pthread_cond_t condition;
  pthread_cond_init(&condition, &attributes);
  pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
  pthread_mutex_lock(&mutex);
  const timespec until = Until(clock);
  while (pthread_cond_timedwait(&condition, &mutex, &until) == 0) {
  }
}

template <typename Clock>
void WaitForStandardCondition() {
  std::mutex mutex;
  std::condition_variable condition;
  std::unique_lock<std::mutex> lock(mutex);
  const auto until = Clock::now() + std::chrono::milliseconds(WAIT_MS);
  while (condition.wait_until(lock, until) == std::cv_status::no_timeout) {
  }
}

void WaitForSemaphore() {
  sem_t semaphore;
  sem_init(&semaphore, 0, 0);
  const timespec until = Until(CLOCK_REALTIME);
  sem_timedwait(&semaphore, &until);
}

void WaitForEvents() {
  epoll_event event{};
  epoll_wait(epoll_create1(0), &event, 1, WAIT_MS);
}

void Select() {
  timeval limit{WAIT_MS / 1000, 0};
  select(0, nullptr, nullptr, nullptr, &limit);
}

void SleepUntil() {
  const timespec until = Until(CLOCK_MONOTONIC);
  clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
}

const std::map<std::string, std::function<void()>> WAITS = {
    {"poll", [] { poll(nullptr, 0, WAIT_MS); }},
    {"ppoll",
     [] {
       const timespec span = Span();
       ppoll(nullptr, 0, &span, nullptr);
     }},
    {"epoll", WaitForEvents},
    {"select", Select},
    {"nanosleep",
     [] {
       const timespec span = Span();
       nanosleep(&span, nullptr);
     }},
    {"sleep", [] { sleep(WAIT_MS / 1000); }},
    {"usleep", [] { usleep(WAIT_MS * 1000); }},
    {"clock_nanosleep", SleepUntil},
    {"cond_realtime", [] { WaitForCondition(CLOCK_REALTIME); }},
    {"cond_monotonic", [] { WaitForCondition(CLOCK_MONOTONIC); }},
    {"steady", WaitForStandardCondition<std::chrono::steady_clock>},
    {"system", WaitForStandardCondition<std::chrono::system_clock>},
    {"semaphore", WaitForSemaphore},
};

// The differences between the other time functions and the first, in milliseconds.
void PrintTimes() {
  timeval day{};
  const double real = OwnNow(CLOCK_REALTIME);
  gettimeofday(&day, nullptr);
  const double dayNow =
      static_cast<double>(day.tv_sec) * 1000.0 + static_cast<double>(day.tv_usec) / 1000.0;
  const double seconds = static_cast<double>(time(nullptr)) * 1000.0;
  timespec machine{};
  syscall(SYS_clock_gettime, CLOCK_REALTIME, &machine);
  timespec processor{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &processor);
  std::printf("%f %f %f %f\n", dayNow - real, seconds - real, real - Milliseconds(machine),
              Milliseconds(processor));
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 1 ? argv[1] : "";
  if (what == "times") {
    PrintTimes();
    return 0;
  }
  const auto wait = WAITS.find(what);
  if (wait == WAITS.end()) {
    return 2;
  }
  const double machine = MachineNow();
  const double own = OwnNow(CLOCK_MONOTONIC);
  wait->second();
  std::printf("%f %f\n", MachineNow() - machine, OwnNow(CLOCK_MONOTONIC) - own);
  return 0;
}
