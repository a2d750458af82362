// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCTask.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "manual_alarm_clock.h"
#include "recording_task.h"
#include "support/wait_for.h"

namespace {

using support::WaitFor;
using testing::ElementsAre;

TEST(FCStateAlarm, PostsItsEventWithNullParametersAsOftenAsAsked) {
  ManualAlarmClock clock;
  RecordingTask task;
  FCStateAlarm alarm;
  EXPECT_TRUE(alarm.Create(&task, 1004, 1000, 2));
  EXPECT_EQ("RecordingTaskLong", clock.LastRequest().task);
  EXPECT_EQ(1004U, clock.LastRequest().type);
  EXPECT_EQ(1000, clock.LastRequest().periodMs);
  EXPECT_EQ(2, clock.LastRequest().repeat);
  EXPECT_TRUE(clock.Tick(1));
  EXPECT_TRUE(clock.Tick(1));
  EXPECT_FALSE(clock.Tick(1));
  task.Post(9, false, true);
  EXPECT_THAT(task.Types(), ElementsAre(0, 1004, 1004, 9));
}

TEST(FCStateAlarm, PostsWithoutEndWhenRepeatIsZero) {
  ManualAlarmClock clock;
  RecordingTask task;
  FCStateAlarm alarm;
  alarm.Create(&task, 5, 1000, 0);
  for (int i = 0; i < 10; ++i) {
    EXPECT_TRUE(clock.Tick(1));
  }
  alarm.Destroy();
}

TEST(FCStateAlarm, RunsUntilItIsDestroyedAlsoAfterItsLastEvent) {
  ManualAlarmClock clock;
  RecordingTask task;
  FCStateAlarm alarm;
  EXPECT_FALSE(alarm.IsRunning());
  alarm.Create(&task, 5, 1000, 1);
  clock.Tick(1);
  EXPECT_TRUE(alarm.IsRunning());
  EXPECT_FALSE(alarm.Create(&task, 5, 1000, 1));
  EXPECT_TRUE(alarm.Destroy());
  EXPECT_FALSE(alarm.IsRunning());
  EXPECT_FALSE(alarm.Destroy());
  EXPECT_TRUE(alarm.Create(&task, 5, 1000, 1));
}

TEST(FCStateAlarm, PostsNothingAfterDestroy) {
  ManualAlarmClock clock;
  RecordingTask task;
  FCStateAlarm alarm;
  alarm.Create(&task, 5, 1000, 0);
  alarm.Destroy();
  EXPECT_FALSE(clock.Tick(1));
}

TEST(FCStateAlarm, EndsWithItsObject) {
  ManualAlarmClock clock;
  RecordingTask task;
  {
    FCStateAlarm alarm;
    alarm.Create(&task, 5, 1000, 0);
  }
  EXPECT_FALSE(clock.Tick(1));
}

TEST(FCStateAlarm, NeedsATask) {
  FCStateAlarm alarm;
  EXPECT_FALSE(alarm.Create(nullptr, 5, 1000, 1));
  EXPECT_FALSE(alarm.IsRunning());
}

/// Destroys its own alarm in its event, as the daemon does.
class AlarmedTask : public FCTask {
 public:
  AlarmedTask() { Create("Alarmed", 1000, 8); }
  ~AlarmedTask() override { Destroy(); }
  bool t_OnEvent(const FSEvent*) override { return m_alarm.Destroy(); }
  FCStateAlarm m_alarm;
};

TEST(FCStateAlarm, CanBeDestroyedOnTheTasksThread) {
  ManualAlarmClock clock;
  AlarmedTask task;
  task.m_alarm.Create(&task, 5, 1000, 0);
  clock.Tick(1);
  EXPECT_TRUE(WaitFor([&] { return !task.m_alarm.IsRunning(); }, "the alarm's end"));
  EXPECT_FALSE(clock.Tick(1));
}

TEST(FCStateAlarm, OfTheSystemsClockPostsByItself) {
  RecordingTask task;
  FCStateAlarm alarm;
  EXPECT_TRUE(alarm.Create(&task, 5, 1, 2));
  EXPECT_TRUE(WaitFor([&] { return task.Types().size() == 3; }, "two events"));
  EXPECT_THAT(task.Types(), ElementsAre(0, 5, 5));
}

}  // namespace
