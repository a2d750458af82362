// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/tv_log.h"

#include <gtest/gtest.h>

#include "support/files.h"

namespace desk::tv {
namespace {

using std::chrono::seconds;

class TvLogTest : public testing::Test {
 protected:
  std::string StampOf(const std::string& line) const { return line.substr(0, line.find(' ')); }

  support::TempDir m_directory;
  const std::string m_path = m_directory / "desk-tv.log";
  TvLog m_log{m_path};
};

TEST_F(TvLogTest, ItsClockIsTheMachinesAtFirst) {
  const Timestamp before = WallClock();
  const Timestamp now = m_log.Now();
  EXPECT_GE(now, before);
  EXPECT_LE(now, WallClock());
}

TEST_F(TvLogTest, ItsClockRunsAsFastAsTheTv) {
  const Timestamp since = WallClock() - seconds(2);
  m_log.SetClock(since, since + seconds(3600), 100);
  const Timestamp now = m_log.Now();
  EXPECT_GE(now, since + seconds(3800));
  EXPECT_LE(now, since + seconds(3600) + (WallClock() - since) * 100);
}

TEST_F(TvLogTest, ALineCarriesTheTimeOfItsClock) {
  m_log.SetClock(WallClock() - seconds(2), WallClock(), 100);
  const Timestamp before = m_log.Now();
  m_log.Say("text");
  const std::string line = support::ReadFile(m_path);
  const auto stamp = ParseTimestamp(StampOf(line));
  ASSERT_TRUE(stamp.has_value()) << line;
  EXPECT_GE(*stamp, before);
  EXPECT_LE(*stamp, m_log.Now());
  EXPECT_EQ(line.substr(StampOf(line).size()), " text\n");
}

}  // namespace
}  // namespace desk::tv
