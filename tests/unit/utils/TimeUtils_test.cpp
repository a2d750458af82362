// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/TimeUtils.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <limits>

#include "fake/control/log.h"

namespace {

using testing::ElementsAre;

std::string Text(time_t time) {
  return TimeUtils::GetUTCTimeString(&time);
}

TEST(TimeUtils, TheEpochIsItsFirstSecondInUtc) {
  EXPECT_EQ(Text(0), "1970-01-01T00:00:00Z");
  EXPECT_THAT(fake::LogTexts(4), ElementsAre("[Debug] timeUTCStr : 1970-01-01T00:00:00Z"));
}

TEST(TimeUtils, ATimeIsWrittenInUtcWhateverTheZone) {
  setenv("TZ", "EST5EDT", 1);
  tzset();
  EXPECT_EQ(Text(1582934399), "2020-02-28T23:59:59Z");
  EXPECT_EQ(Text(1582934400), "2020-02-29T00:00:00Z");
  EXPECT_EQ(Text(-1), "1969-12-31T23:59:59Z");
}

TEST(TimeUtils, AYearThatNoTextHoldsIsAnEmptyText) {
  EXPECT_EQ(Text(std::numeric_limits<time_t>::max()), "");
}

TEST(TimeUtils, AnEmptyTextIsTheEpoch) {
  setenv("TZ", "EST5EDT", 1);
  EXPECT_EQ(TimeUtils::GetEpochTime(""), 0);
  EXPECT_THAT(fake::LogTexts(4), ElementsAre("[Debug] rTime : "));
  EXPECT_STREQ(getenv("TZ"), "EST5EDT");
}

TEST(TimeUtils, ATextIsReadAsUtcWhateverTheZone) {
  setenv("TZ", "EST5EDT", 1);
  tzset();
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29T00:00:00Z"), 1582934400);
  EXPECT_THAT(fake::LogTexts(4), ElementsAre("[Debug] rTime : 2020-02-29T00:00:00Z"));
  EXPECT_STREQ(getenv("TZ"), "UTC");
}

TEST(TimeUtils, WhatIsWrittenIsReadBack) {
  for (const time_t time : {time_t{0}, time_t{1}, time_t{951782399}, time_t{1709164800},
                            time_t{4102444799}, time_t{253402300799}}) {
    EXPECT_EQ(TimeUtils::GetEpochTime(Text(time)), time);
  }
}

TEST(TimeUtils, TimesAfter2038Work) {
  EXPECT_EQ(Text(2147483647), "2038-01-19T03:14:07Z");
  EXPECT_EQ(Text(2147483648), "2038-01-19T03:14:08Z");
  EXPECT_EQ(TimeUtils::GetEpochTime("2038-01-19T03:14:07Z"), 2147483647);
  EXPECT_EQ(TimeUtils::GetEpochTime("2038-01-19T03:14:08Z"), 2147483648);
  EXPECT_EQ(TimeUtils::GetEpochTime("2106-02-07T06:28:16Z"), 4294967296);
}

TEST(TimeUtils, SummerTimeInTheEnvironmentMovesNoDueTime) {
  // From an hour before the change to summer time until two after, and the same in autumn.
  for (const time_t change : {time_t{1585443600}, time_t{1603587600}}) {
    for (time_t time = change - 3600; time <= change + 7200; time += 1800) {
      setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
      tzset();
      EXPECT_EQ(TimeUtils::GetEpochTime(Text(time)), time);
    }
  }
}

TEST(TimeUtils, AnUnknownZoneInTheEnvironmentDoesNoHarm) {
  setenv("TZ", ":no/such/zone", 1);
  tzset();
  EXPECT_EQ(Text(1582934400), "2020-02-29T00:00:00Z");
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29T00:00:00Z"), 1582934400);
}

TEST(TimeUtils, ADayBehindTheMonthsEndIsTheNextMonths) {
  EXPECT_EQ(TimeUtils::GetEpochTime("2021-02-30T00:00:00Z"),
            TimeUtils::GetEpochTime("2021-03-02T00:00:00Z"));
}

TEST(TimeUtils, WhatIsOutOfItsRangeEndsTheTimeBeforeIt) {
  const time_t year = TimeUtils::GetEpochTime("2020-");
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-13-05T06:07:08Z"), year);
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-00-05T06:07:08Z"), year);
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29T25:00:00Z"),
            TimeUtils::GetEpochTime("2020-02-29T"));
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29T12:60:00Z"),
            TimeUtils::GetEpochTime("2020-02-29T12:"));
}

TEST(TimeUtils, OtherFormsOfATimeAreReadAsFarAsTheyAgree) {
  // Only UTC: an offset after the seconds is ignored, like any other text there.
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29T00:00:00+05:00"), 1582934400);
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29T00:00:00.750Z"), 1582934400);
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29 23:59:59Z"),
            TimeUtils::GetEpochTime("2020-02-29T00:00:00Z"));
  EXPECT_EQ(TimeUtils::GetEpochTime("20200229T000000Z"), TimeUtils::GetEpochTime("2020"));
}

TEST(TimeUtils, WhatFollowsTheTimeIsLeftOut) {
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29T00:00:00Z and more"), 1582934400);
}

TEST(TimeUtils, ATextWithoutATimeIsLongPastAndAlwaysTheSame) {
  const time_t first = TimeUtils::GetEpochTime("nonsense");
  EXPECT_LT(first, 0);
  // Values that an earlier call left on the stack have no effect.
  TimeUtils::GetEpochTime("2020-02-29T12:34:56Z");
  EXPECT_EQ(TimeUtils::GetEpochTime("nonsense"), first);
  EXPECT_EQ(TimeUtils::GetEpochTime("\xff\xfe\x80"), first);
  EXPECT_EQ(TimeUtils::GetEpochTime("%Y-%m-%dT%H:%M:%SZ"), first);
}

TEST(TimeUtils, ATimeCutShortIsReadAsFarAsItGoes) {
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29T12:34"),
            TimeUtils::GetEpochTime("2020-02-29T12:34:00Z"));
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29"), TimeUtils::GetEpochTime("2020-02-29T00:00:00Z"));
}

TEST(TimeUtils, AByteAbove127EndsTheTime) {
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29\xb2"),
            TimeUtils::GetEpochTime("2020-02-29T00:00:00Z"));
  // A "T" except for its highest bit.
  EXPECT_EQ(TimeUtils::GetEpochTime("2020-02-29\xd4"
                                    "12:00:00Z"),
            TimeUtils::GetEpochTime("2020-02-29T00:00:00Z"));
}

}  // namespace
