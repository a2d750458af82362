// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/tv_clock.h"

#include <glib.h>
#include <gtest/gtest.h>

#include "desk/common/desk_error.h"
#include "support/files.h"
#include "support/wait_for.h"

namespace desk::tv {
namespace {

using std::chrono::hours;
using std::chrono::seconds;

class Clock : public testing::Test {
 protected:
  TvClock Make(int speed, bool reset = false) {
    return TvClock(m_file, speed, reset, [this] { return m_machine; });
  }

  support::TempDir m_dir;
  const std::string m_file = m_dir / "clock.json";
  TvClock::Time m_machine = seconds(1700000000);
};

TEST_F(Clock, ANewTvHasTheMachinesTime) {
  const TvClock clock = Make(1);
  EXPECT_EQ(clock.Now(), m_machine);
  EXPECT_FALSE(clock.Differs());
  EXPECT_FALSE(support::Exists(m_file));
}

TEST_F(Clock, AFastClockRunsAheadOfTheMachine) {
  const TvClock clock = Make(60);
  const TvClock::Time start = m_machine;
  m_machine += seconds(10);
  EXPECT_EQ(clock.Now(), start + seconds(600));
}

TEST_F(Clock, AfterAFastRunTheTimeContinues) {
  TvClock::Time end{};
  {
    const TvClock clock = Make(60);
    m_machine += seconds(10);
    end = clock.Now();
  }
  m_machine += hours(1);
  const TvClock clock = Make(1);
  EXPECT_EQ(clock.Now(), end + hours(1));
  EXPECT_TRUE(clock.Differs());
}

TEST_F(Clock, TheLeadIsKeptOverManyStarts) {
  {
    const TvClock clock = Make(3600);
    m_machine += seconds(1);
  }
  for (int i = 0; i < 3; ++i) {
    m_machine += seconds(5);
    EXPECT_EQ(Make(1).Now(), m_machine + seconds(3599));
  }
}

TEST_F(Clock, AMachineWhoseClockWentBackDoesNotTakeTheTvBack) {
  TvClock::Time end{};
  {
    const TvClock clock = Make(60);
    m_machine += seconds(10);
    end = clock.Now();
  }
  m_machine -= hours(100);
  EXPECT_EQ(Make(1).Now(), end);
}

TEST_F(Clock, AResetReturnsToTheMachinesTime) {
  {
    const TvClock clock = Make(100000);
    m_machine += seconds(100);
  }
  const TvClock clock = Make(1, true);
  EXPECT_EQ(clock.Now(), m_machine);
  EXPECT_FALSE(clock.Differs());
}

TEST_F(Clock, ATvThatWasKilledLosesNoTime) {
  const std::string kept = m_dir / "kept";
  TvClock::Time end{};
  {
    const TvClock clock = Make(60);
    // Up to a period passes between the last store and the kill.
    m_machine += seconds(1);
    end = clock.Now();
    support::WriteFile(kept, support::ReadFile(m_file));
  }
  support::WriteFile(m_file, support::ReadFile(kept));
  EXPECT_GE(Make(1).Now(), end);
}

TEST_F(Clock, TheTimeIsStoredWhileAFastClockRuns) {
  const TvClock clock = Make(60);
  const std::string before = support::ReadFile(m_file);
  m_machine += seconds(1);
  EXPECT_TRUE(support::WaitFor(
      [&] {
        g_main_context_iteration(nullptr, FALSE);
        return support::ReadFile(m_file) != before;
      },
      "the next store of the time"));
}

TEST_F(Clock, ABrokenFileIsIgnored) {
  for (const char* text : {"", "{", "[]", "7", R"({"tv":"x","machine":{}})"}) {
    support::WriteFile(m_file, text);
    EXPECT_EQ(Make(1).Now(), m_machine) << text;
  }
}

TEST_F(Clock, AtTheEndOfItsRangeTheTimeStops) {
  const TvClock clock = Make(100000);
  m_machine += hours(24 * 365);
  const TvClock::Time last = clock.Now();
  m_machine += hours(1);
  EXPECT_EQ(clock.Now(), last);
  EXPECT_GT(last, m_machine);
}

TEST_F(Clock, ATimeThatCannotBeStoredIsAnError) {
  EXPECT_THROW(TvClock(m_dir / "none/clock.json", 2, false), DeskError);
}

}  // namespace
}  // namespace desk::tv
