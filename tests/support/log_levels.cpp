// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Part of every test program of the daemon on the fake: a test fails when the priority of a log
// record does not match its level word, even if the test has cleared the log since.
#include <gtest/gtest.h>

#include <map>

#include "fake/control/log_levels.h"

namespace {

const std::map<std::string, int>& Priorities() {
  static const std::map<std::string, int> s_priorities = {
      {"[Info]", 4}, {"[Debug]", 4}, {"[ERROR]", 6}};
  return s_priorities;
}

class LogLevelCheck : public testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo& /*test*/) override {
    for (const fake::LogLevel& level : fake::LogLevels()) {
      const auto expected = Priorities().find(level.word);
      if (expected == Priorities().end()) {
        ADD_FAILURE() << "a log record without a level word: " << level.example;
      } else {
        EXPECT_EQ(level.priority, expected->second) << "the priority of: " << level.example;
      }
    }
  }
};

// GoogleTest owns its listeners.
[[maybe_unused]] const bool g_added = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new LogLevelCheck);
  return true;
}();

}  // namespace
