// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "framework/system_alarm_clock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "support/wait_for.h"

namespace {

using support::WaitFor;

/// Never deleted, like the framework's clock: its thread does not end.
framework::SystemAlarmClock& Clock() {
  static auto* s_clock = new framework::SystemAlarmClock;
  return *s_clock;
}

TEST(SystemAlarmClock, TicksNotBeforeThePeriodIsOver) {
  std::atomic<bool> ticked{false};
  const auto start = std::chrono::steady_clock::now();
  Clock().Start({"", 0, 20, 1}, [&] {
    ticked = true;
    return false;
  });
  ASSERT_TRUE(WaitFor([&] { return ticked.load(); }, "the tick"));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
}

TEST(SystemAlarmClock, TicksUntilTheTickGivesFalse) {
  std::atomic<int> ticks{0};
  std::atomic<bool> later{false};
  Clock().Start({"", 0, 1, 0}, [&] { return ++ticks < 3; });
  Clock().Start({"", 0, 50, 0}, [&] {
    later = true;
    return false;
  });
  ASSERT_TRUE(WaitFor([&] { return later.load(); }, "the later alarm"));
  EXPECT_EQ(3, ticks);
}

TEST(SystemAlarmClock, DoesNotLetAShortAlarmWaitForALongOneThatCameBefore) {
  std::atomic<bool> ticked{false};
  const unsigned long hour = Clock().Start({"", 0, 3600 * 1000, 1}, [] { return false; });
  Clock().Start({"", 0, 5, 1}, [&] {
    ticked = true;
    return false;
  });
  EXPECT_TRUE(WaitFor([&] { return ticked.load(); }, "the short alarm's tick"));
  Clock().Stop(hour);
}

TEST(SystemAlarmClock, TicksNoMoreWhenStopped) {
  std::atomic<int> ticks{0};
  const unsigned long number = Clock().Start({"", 0, 1, 0}, [&] {
    ++ticks;
    return true;
  });
  EXPECT_NE(0U, number);
  ASSERT_TRUE(WaitFor([&] { return ticks > 0; }, "a tick"));
  Clock().Stop(number);
  const int stopped = ticks;
  std::atomic<bool> later{false};
  Clock().Start({"", 0, 20, 1}, [&] {
    later = true;
    return false;
  });
  ASSERT_TRUE(WaitFor([&] { return later.load(); }, "the later alarm"));
  EXPECT_EQ(stopped, ticks);
  Clock().Stop(number);
}

}  // namespace
