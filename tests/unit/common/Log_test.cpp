// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/Log.h"

#include <gmock/gmock.h>

#include "fake/control/log.h"

namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

TEST(Log, InfoAndDebugGoOutAtPriorityFourAndErrorAtSix) {
  ORV_LOG_INFO("[Info] a");
  ORV_LOG_DEBUG("[Debug] b");
  ORV_LOG_ERROR("[ERROR] c");
  EXPECT_THAT(fake::LogTexts(4), ElementsAre("[Info] a", "[Debug] b"));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] c"));
}

TEST(Log, ARecordHasTheDaemonsTagAHeadAndAClosingNewline) {
  ORV_LOG_INFO("[Info] number : %d, text : %s", 7, "x");
  const std::vector<fake::LogRecord> logs = fake::Logs();
  ASSERT_EQ(logs.size(), 1u);
  EXPECT_EQ(logs[0].tag, "orv-enabler");
  EXPECT_THAT(logs[0].text, MatchesRegex("tests/unit/common/Log_test.cpp: TestBody\\([0-9]+\\) > "
                                         "\\[Info\\] number : 7, text : x\n"));
}

TEST(Log, ARecordOfAnyLevelIsALine) {
  ORV_LOG_INFO("[Info] a");
  ORV_LOG_DEBUG("[Debug] b");
  ORV_LOG_ERROR("[ERROR] c");
  std::string text;
  for (const fake::LogRecord& log : fake::Logs()) {
    text += log.text;
  }
  const std::string head = "tests/unit/common/Log_test.cpp: TestBody\\([0-9]+\\) > ";
  EXPECT_THAT(text, MatchesRegex(head + "\\[Info\\] a\n" + head + "\\[Debug\\] b\n" + head +
                                 "\\[ERROR\\] c\n"));
}

TEST(Log, ARecordWithoutArgumentsIsComplete) {
  ORV_LOG_INFO("[Info] ");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] "));
}

}  // namespace
