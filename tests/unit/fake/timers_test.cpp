// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <smart_deadlock.h>
#include <unistd.h>

#include <vector>

#include "FCTask.h"
#include "fake/control/fake.h"
#include "fake_fixture.h"
#include "support/wait_for.h"

namespace {

using testing::ElementsAre;

gboolean CountAndGoOn(gpointer data) {
  ++*static_cast<int*>(data);
  return TRUE;
}

gboolean CountAndEnd(gpointer data) {
  ++*static_cast<int*>(data);
  return FALSE;
}

gboolean RemoveItself(gpointer data) {
  g_source_remove(*static_cast<guint*>(data));
  return FALSE;
}

class Timers : public FakeTest {};

TEST_F(Timers, AreListedWithTheirInterval) {
  int count = 0;
  const guint first = g_timeout_add(250, CountAndGoOn, &count);
  const guint second = g_timeout_add_seconds(720, CountAndEnd, nullptr);
  const auto timers = fake::Timers();
  ASSERT_EQ(2U, timers.size());
  EXPECT_EQ(first, timers[0].id);
  EXPECT_EQ(250U, timers[0].intervalMs);
  EXPECT_FALSE(timers[0].inSeconds);
  EXPECT_EQ(CountAndGoOn, timers[0].function);
  EXPECT_EQ(&count, timers[0].data);
  EXPECT_EQ(second, timers[1].id);
  EXPECT_EQ(720000U, timers[1].intervalMs);
  EXPECT_TRUE(timers[1].inSeconds);
  EXPECT_THAT(fake::CallTexts(), ElementsAre("g_timeout_add(250, set, set) = 1",
                                             "g_timeout_add_seconds(720, set, null) = 2"));
}

TEST_F(Timers, StayWhileTheirFunctionSaysSo) {
  int count = 0;
  const guint id = g_timeout_add(250, CountAndGoOn, &count);
  EXPECT_TRUE(fake::FireTimer(id));
  EXPECT_TRUE(fake::FireTimer(id));
  EXPECT_EQ(2, count);
  EXPECT_TRUE(g_source_remove(id));
  EXPECT_FALSE(fake::FireTimer(id));
  EXPECT_FALSE(g_source_remove(id));
}

TEST_F(Timers, GoWhenTheirFunctionSaysSo) {
  int count = 0;
  g_timeout_add(250, CountAndEnd, &count);
  EXPECT_EQ(1U, fake::FireTimersOf(250));
  EXPECT_EQ(0U, fake::FireTimersOf(250));
  EXPECT_EQ(1, count);
}

TEST_F(Timers, MayRemoveThemselves) {
  guint id = 0;
  id = g_timeout_add(1, RemoveItself, &id);
  EXPECT_TRUE(fake::FireTimer(id));
  EXPECT_TRUE(fake::Timers().empty());
}

TEST_F(Timers, FireAsOftenAsTheirIntervalPassed) {
  int fast = 0;
  int slow = 0;
  int once = 0;
  g_timeout_add(10000, CountAndGoOn, &fast);
  g_timeout_add(60000, CountAndGoOn, &slow);
  g_timeout_add_seconds(5, CountAndEnd, &once);
  EXPECT_EQ(8U, fake::AdvanceTimers(60000));
  EXPECT_EQ(6, fast);
  EXPECT_EQ(1, slow);
  EXPECT_EQ(1, once);
  EXPECT_EQ(0U, fake::AdvanceTimers(9999));
  EXPECT_EQ(1U, fake::AdvanceTimers(1));
}

TEST_F(Timers, ThatFailHaveTheIDZero) {
  fake::Fail("g_timeout_add");
  EXPECT_EQ(0U, g_timeout_add(250, CountAndGoOn, nullptr));
  EXPECT_TRUE(fake::Timers().empty());
}

/// Counts its events.
class CountingTask : public FCTask {
 public:
  CountingTask() { Create("Counting", 0, 8); }
  ~CountingTask() override { Destroy(); }
  bool t_OnEvent(const FSEvent* pEvent) override {
    m_lastType = pEvent->type;
    ++m_events;
    return true;
  }
  int Events() const { return m_events; }
  unsigned int LastType() const { return m_lastType; }

 private:
  std::atomic<unsigned int> m_lastType{0};
  std::atomic<int> m_events{0};
};

class Alarms : public FakeTest {};

TEST_F(Alarms, PostWhenTheTestSaysSo) {
  CountingTask task;
  FCStateAlarm alarm;
  ASSERT_TRUE(alarm.Create(&task, 1004, 1000, 1));
  ASSERT_EQ(1U, fake::Alarms().size());
  EXPECT_EQ("Counting", fake::Alarms()[0].task);
  EXPECT_EQ(1004U, fake::Alarms()[0].type);
  EXPECT_EQ(1000, fake::Alarms()[0].periodMs);
  EXPECT_EQ(1, fake::Alarms()[0].left);
  EXPECT_EQ(1U, fake::FireAlarms(1004));
  EXPECT_TRUE(support::WaitFor([&] { return task.Events() == 1; }, "the alarm's event"));
  EXPECT_EQ(1004U, task.LastType());
  EXPECT_TRUE(fake::Alarms().empty());
  EXPECT_TRUE(alarm.IsRunning());
  EXPECT_EQ(0U, fake::FireAlarms(1004));
}

TEST_F(Alarms, AreGoneAfterDestroy) {
  CountingTask task;
  FCStateAlarm alarm;
  alarm.Create(&task, 1, 1000, 0);
  EXPECT_EQ(1U, fake::FireAlarms(1));
  EXPECT_EQ(1U, fake::FireAlarms(1));
  EXPECT_TRUE(alarm.Destroy());
  EXPECT_EQ(0U, fake::FireAlarms(1));
}

class MainLoop : public FakeTest {};

TEST_F(MainLoop, RunsWhatTheTestGivesIt) {
  int fired = 0;
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  EXPECT_EQ(fake::MainLoop(), loop);
  EXPECT_EQ(1U, fake::OpenHandles("main_loop"));
  fake::SetMainLoopBody([&] { ++fired; });
  g_main_loop_run(loop);
  EXPECT_EQ(1, fired);
  g_main_loop_unref(loop);
  EXPECT_EQ(0U, fake::OpenHandles("main_loop"));
}

TEST_F(MainLoop, IsNullOnAFault) {
  fake::Fail("g_main_loop_new");
  EXPECT_EQ(nullptr, g_main_loop_new(nullptr, FALSE));
  EXPECT_EQ(nullptr, fake::MainLoop());
}

class Watchdog : public FakeTest {};

TEST_F(Watchdog, KeepsItsTimeoutAndItsNotifications) {
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  smart_deadlock_register_watchdog_service(120);
  smart_deadlock_watchdog_notify(loop);
  EXPECT_EQ(120, fake::WatchdogTimeout());
  EXPECT_THAT(fake::WatchdogNotifications(), ElementsAre(static_cast<void*>(loop)));
  g_main_loop_unref(loop);
}

class LibcCalls : public FakeTest {};

TEST_F(LibcCalls, AreRecorded) {
  malloc_trim(0);
  sync();
  EXPECT_THAT(fake::CallTexts(), ElementsAre("malloc_trim(0) = 1", "sync() = void"));
}

}  // namespace
