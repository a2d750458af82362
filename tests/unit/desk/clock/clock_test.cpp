// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>

namespace {

constexpr double WAIT_MS = 20000;

std::string Probe(const std::string& what, int speed, const std::string& variable = "") {
  // The address sanitizer of the probe, if any, complains about a library loaded before it.
  const std::string command = variable +
                              " ASAN_OPTIONS=verify_asan_link_order=0 LD_PRELOAD='" CLOCK_LIBRARY
                              "' DESK_CLOCK_SPEED=" +
                              std::to_string(speed) + " '" PROBE "' " + what;
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  std::string text;
  char buffer[256];
  while (pipe != nullptr && std::fgets(buffer, sizeof(buffer), pipe.get()) != nullptr) {
    text += buffer;
  }
  return text;
}

class FastClock : public testing::TestWithParam<const char*> {};

TEST_P(FastClock, AWaitEndsAfterItsTimeByTheProgramsClockAndSoonByTheMachines) {
  std::istringstream text(Probe(GetParam(), 200));
  double machine = 0;
  double own = 0;
  ASSERT_TRUE(text >> machine >> own) << "the probe said: " << text.str();
  EXPECT_GE(own, WAIT_MS);
  // A 200th of the time is 100 ms; the machine may be busy.
  EXPECT_GE(machine, 99);
  EXPECT_LT(machine, 5000);
  EXPECT_NEAR(own / machine, 200, 20);
}

INSTANTIATE_TEST_SUITE_P(AllWaits, FastClock,
                         testing::Values("poll", "ppoll", "epoll", "select", "nanosleep", "sleep",
                                         "usleep", "clock_nanosleep", "cond_realtime",
                                         "cond_monotonic", "steady", "system", "semaphore"),
                         [](const auto& wait) { return std::string(wait.param); });

struct Times {
  double day = 0;
  double seconds = 0;
  double ahead = 0;
  double processor = 0;
};

Times ProbeTimes(int speed, const std::string& variable = "") {
  std::istringstream text(Probe("times", speed, variable));
  Times times;
  EXPECT_TRUE(text >> times.day >> times.seconds >> times.ahead >> times.processor);
  return times;
}

TEST(FastClockTimes, TheTimeOfDayBeginsAtTheMachines) {
  const Times times = ProbeTimes(10);
  EXPECT_GE(times.ahead, 0);
  EXPECT_LT(times.ahead, 60000);
}

TEST(FastClockTimes, TheTimeOfDayRunsFasterFromTheGivenMomentOn) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto since = std::chrono::nanoseconds(now - std::chrono::seconds(60)).count();
  const Times times = ProbeTimes(10, "DESK_CLOCK_SINCE=" + std::to_string(since));
  EXPECT_GE(times.ahead, 9 * 60000);
  EXPECT_LT(times.ahead, 9 * 60000 + 60000);
  EXPECT_GE(times.day, -0.001);
  EXPECT_LT(times.day, 20000);
}

TEST(FastClockTimes, TheTimeOfDayBeginsAtTheBaseThatIsGiven) {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto since = std::chrono::nanoseconds(now).count();
  const auto base = std::chrono::nanoseconds(now + std::chrono::hours(2)).count();
  const Times times = ProbeTimes(
      1, "DESK_CLOCK_SINCE=" + std::to_string(since) + " DESK_CLOCK_BASE=" + std::to_string(base));
  EXPECT_NEAR(times.ahead, 7200000, 50);
}

TEST(FastClockTimes, AllWaysToAskForTheTimeOfDayAgree) {
  const Times times = ProbeTimes(10);
  EXPECT_GE(times.day, -0.001);
  EXPECT_LT(times.day, 20000);
  EXPECT_GT(times.seconds, -1001);
  EXPECT_LT(times.seconds, 20000);
}

TEST(FastClockTimes, ProcessorTimeIsLeftAlone) {
  EXPECT_LT(ProbeTimes(100000).processor, 10000);
}

TEST(FastClockTimes, ASpeedOfOneChangesNothing) {
  EXPECT_NEAR(ProbeTimes(1).ahead, 0, 50);
}

}  // namespace
