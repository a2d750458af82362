// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/timestamp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace desk {
namespace {

timespec At(time_t seconds, long nanoseconds) {
  timespec time{};
  time.tv_sec = seconds;
  time.tv_nsec = nanoseconds;
  return time;
}

TEST(Timestamp, UtcHasTheWholeDateAndMilliseconds) {
  EXPECT_EQ(UtcText(At(1700000000, 7999999)), "2023-11-14T22:13:20.007Z");
}

TEST(Timestamp, TheLogsTimeIsLocalAndWithoutTheYear) {
  setenv("TZ", "XYZ-2", 1);
  tzset();
  EXPECT_EQ(LogText(At(1700000000, 45000000)), "11-15 00:13:20.045");
}

TEST(Timestamp, NowIsTheClocksTime) {
  EXPECT_GE(TimeOfDay().tv_sec, 1700000000);
  EXPECT_THAT(UtcText(TimeOfDay()), testing::MatchesRegex("20..-..-..T..:..:..\\....Z"));
}

}  // namespace
}  // namespace desk
