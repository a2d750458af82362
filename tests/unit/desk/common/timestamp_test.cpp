// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/timestamp.h"

#include <gtest/gtest.h>

namespace desk {
namespace {

constexpr Timestamp MOMENT(1795221298850);  // 2026-11-21T00:34:58.850Z

TEST(DeskTimestamp, ATimeIsWrittenInUtcWithMilliseconds) {
  EXPECT_EQ(FormatTimestamp(MOMENT), "2026-11-21T00:34:58.850Z");
  EXPECT_EQ(FormatTimestamp(Timestamp(0)), "1970-01-01T00:00:00.000Z");
}

TEST(DeskTimestamp, AWrittenTimeIsReadBack) {
  EXPECT_EQ(ParseTimestamp(FormatTimestamp(MOMENT)), MOMENT);
}

TEST(DeskTimestamp, ATimeInWholeSecondsIsRead) {
  EXPECT_EQ(ParseTimestamp("2026-11-21T00:34:58Z"), Timestamp(1795221298000));
}

TEST(DeskTimestamp, AnyOtherTextIsNotATime) {
  for (const char* text : {"", "2026-11-21", "2026-11-21T00:34:58", "2026-11-21T00:34:58.8Z",
                           "2026-11-21T00:34:58.850Z ", "2026-13-21T00:34:58Z"}) {
    EXPECT_FALSE(ParseTimestamp(text).has_value()) << text;
  }
}

}  // namespace
}  // namespace desk
