// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVScheduler.h"

#include "framework/events.h"
#include "unit/controller/allocations.h"
#include "unit/controller/gate.h"
#include "unit/controller/scheduler_fixture.h"

namespace {

using support::HasLog;
using support::HasLogsInOrder;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

const char TIME_KEY[] = "memory/menu/network/set_time";
const char PORT[] = "orv_scheduler_command_port";

class SchedulerCreation : public SchedulerTest {};

TEST_F(SchedulerCreation, IsOneTaskOfItsName) {
  ORVScheduler* scheduler = ORVScheduler::GetInstance();
  EXPECT_EQ(ORVScheduler::GetInstance(), scheduler);
  EXPECT_EQ(scheduler->GetName(), "ORVScheduler");
  EXPECT_EQ(fake::CallCount("FCTask::Create"), 1u);
}

TEST_F(SchedulerCreation, TheStepsComeInOrder) {
  ORVScheduler::GetInstance();
  EXPECT_THAT(
      fake::CallTexts(),
      ElementsAre("FCTask::Create(ORVScheduler, 1000, 8192) = true",
                  "message_port_register_local_port(orv_scheduler_command_port, set, null) = 1",
                  "vconf_get_int(memory/menu/network/set_time) = -1",
                  "vconf_notify_key_changed(memory/menu/network/set_time, set, set) = 0"));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] ", "[Info] "));
  EXPECT_EQ(g_nSchedulerTimerID, 0u);
}

TEST_F(SchedulerCreation, AFailedTaskIsLoggedAndTheRestIsDone) {
  fake::Fail("FCTask::Create", 0);
  ORVScheduler::GetInstance();
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] FCTask::Create() return false."));
  EXPECT_THAT(fake::LocalPorts(), ElementsAre(PORT));
  EXPECT_EQ(fake::KeySubscriptions(TIME_KEY), 1u);
}

TEST_F(SchedulerCreation, AFailedPortLeavesTheSchedulerIdle) {
  fake::StoreKey(TIME_KEY, 1);
  fake::Fail("message_port_register_local_port", -22);
  ORVScheduler::GetInstance();
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] ", "[Info] ", "[ERROR] Port register error: -22",
                          "[ERROR] CreateMessagePortChannel return false."));
  EXPECT_EQ(fake::CallCount("vconf_get_int"), 0u);
  EXPECT_EQ(fake::KeySubscriptions(TIME_KEY), 0u);
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(SchedulerCreation, NetworkTimeThatIsThereAlreadyStartsAtOnceAndIsNotWatched) {
  fake::StoreKey(TIME_KEY, 1);
  ORVScheduler::GetInstance();
  EXPECT_THAT(Sent(), ElementsAre("1002"));
  EXPECT_EQ(fake::KeySubscriptions(TIME_KEY), 0u);
  Drain();
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] pEvent : 1002", "[Debug] [EVENT_START_SCHEDULER]"})));
  EXPECT_THAT(fake::TimersOf(TICK_MS), SizeIs(1));
  fake::SetKey(TIME_KEY, 0);
  fake::SetKey(TIME_KEY, 1);
  EXPECT_EQ(fake::DeliverKeyChanges(), 0u);
  EXPECT_THAT(Sent(), ElementsAre("1002"));
}

TEST_F(SchedulerCreation, AnyOtherValueOfTheKeyIsWatched) {
  fake::StoreKey(TIME_KEY, 2);
  ORVScheduler::GetInstance();
  EXPECT_EQ(fake::KeySubscriptions(TIME_KEY), 1u);
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(SchedulerCreation, AKeyThatCannotBeReadIsWatched) {
  fake::StoreKey(TIME_KEY, 1);
  fake::Fail("vconf_get_int");
  ORVScheduler::GetInstance();
  EXPECT_EQ(fake::KeySubscriptions(TIME_KEY), 1u);
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(SchedulerCreation, ARefusedWatchIsLogged) {
  fake::Fail("vconf_notify_key_changed", 5);
  ORVScheduler::GetInstance();
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] vconf_notify_key_changed, ret = 5"));
}

TEST_F(SchedulerCreation, TheDestructorEndsTheThreadAndUnregistersNothing) {
  Scheduler();
  delete ORVScheduler::GetInstance();
  EXPECT_EQ(fake::CallNames().at(0), "FCTask::Destroy");
  EXPECT_THAT(fake::LocalPorts(), ElementsAre(PORT));
  EXPECT_EQ(fake::KeySubscriptions(TIME_KEY), 1u);
}

class NetworkTime : public SchedulerTest {
 protected:
  void Set(int value) {
    fake::SetKey(TIME_KEY, value);
    EXPECT_EQ(fake::DeliverKeyChanges(), 1u);
  }
};

TEST_F(NetworkTime, OneStarts) {
  Scheduler();
  Set(1);
  EXPECT_THAT(Sent(), ElementsAre("1002"));
  EXPECT_EQ(fake::LogTexts().at(0), "[Debug] set_time value = 1");
  Drain();
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] Network Time is not enabled.")));
  EXPECT_THAT(fake::TimersOf(TICK_MS), SizeIs(1));
}

TEST_F(NetworkTime, AnotherValueIsOnlyLogged) {
  Scheduler();
  Set(2);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Debug] set_time value = 2"));
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(NetworkTime, AFallToZeroStopsNothingAndAReturnStartsAgain) {
  Scheduler();
  Set(1);
  Set(0);
  Drain();
  EXPECT_NE(g_nSchedulerTimerID, 0u);
  Set(1);
  EXPECT_THAT(Sent(), ElementsAre("1002", "1002"));
  Drain();
  // A second source; only the last id is known.
  ASSERT_THAT(fake::TimersOf(TICK_MS), SizeIs(2));
  EXPECT_EQ(g_nSchedulerTimerID, fake::TimersOf(TICK_MS)[1].id);
}

TEST_F(NetworkTime, AStartWithoutItIsDropped) {
  CustomFeeder feeder("a");
  EXPECT_TRUE(Handle(EVENT_START_SCHEDULER));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] pEvent : 1002", "[Debug] [EVENT_START_SCHEDULER]",
                          "[Debug] Network Time is not enabled.",
                          "[Debug] StartScheduler() return false."));
  EXPECT_THAT(fake::Timers(), IsEmpty());
  EXPECT_THAT(LaunchedApps(), IsEmpty());
}

class SchedulerEvents : public SchedulerTest {};

TEST_F(SchedulerEvents, TypesOfRequestsAndUnknownTypesAreInvalid) {
  for (const int type : {1000, 1001, 999, 1007, 0}) {
    Scheduler();
    Forget();
    EXPECT_TRUE(Handle(type));
    EXPECT_THAT(fake::LogTexts(),
                ElementsAre("[Info] pEvent : " + std::to_string(type),
                            "[Debug] Invalid Event Type : " + std::to_string(type)));
  }
}

TEST_F(SchedulerEvents, TheFrameworksOwnEventsAreConsumedSilently) {
  Scheduler();
  FSEvent event;
  event.pReceiver = &Scheduler();
  event.type = framework::EVENT_SUSPEND;
  EXPECT_TRUE(Scheduler().t_OnEvent(&event));
  event.type = framework::EVENT_RESUME;
  EXPECT_TRUE(Scheduler().t_OnEvent(&event));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(SchedulerEvents, AStartFillsTheListStartsTheTimerAndTriesOneItem) {
  CustomFeeder b("b");
  CustomFeeder a("a");
  RecordingApp other("c");
  StartedScheduler();
  EXPECT_THAT(LaunchedApps(), ElementsAre("a.service"));
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 1);
  ASSERT_THAT(fake::Timers(), SizeIs(1));
  EXPECT_TRUE(fake::Timers()[0].inSeconds);
  EXPECT_EQ(fake::Timers()[0].intervalMs, TICK_MS);
  EXPECT_EQ(fake::Timers()[0].data, nullptr);
  EXPECT_EQ(g_nSchedulerTimerID, fake::Timers()[0].id);
}

TEST_F(SchedulerEvents, AStartWithItemsLeftDoesNotRefill) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  Scheduler();
  AppInfoCache::GetInstance()->AddSchedulingItem("b");
  StartedScheduler();
  EXPECT_THAT(LaunchedApps(), ElementsAre("b.service"));
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
}

TEST_F(SchedulerEvents, AStartWithoutServiceAppsRunsTheTimerUntilTheFirstTick) {
  StartedScheduler();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] Scheduling List is empty!!!"));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] LaunchNextItem() return false.")));
  EXPECT_NE(g_nSchedulerTimerID, 0u);
  Forget();
  EXPECT_EQ(fake::AdvanceTimers(TICK_MS), 1u);
  Drain();
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] pEvent : 1004", "[Debug] [EVENT_RESET_SCHEDULER]",
                                    "[Debug] Scheduling List is empty", "[Info] "})));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] Scheduling List is empty!!!")));
  EXPECT_EQ(g_nSchedulerTimerID, 0u);
  EXPECT_THAT(fake::Timers(), IsEmpty());
}

TEST_F(SchedulerEvents, AFailedLaunchOnAStartIsNotLoggedASecondTimeAndTheTimerRuns) {
  CustomFeeder a("a");
  Scheduler();
  fake::QueueLaunchResults({-5});
  StartedScheduler();
  EXPECT_THAT(fake::LogTexts(), HasLog("[ERROR] AppControlUtils::LaunchApp() return false."));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] LaunchNextItem() return false.")));
  EXPECT_THAT(fake::TimersOf(TICK_MS), SizeIs(1));
}

TEST_F(SchedulerEvents, TheTimerPostsAResetAndRepeats) {
  CustomFeeder a("a");
  StartedScheduler();
  Forget();
  EXPECT_EQ(fake::AdvanceTimers(TICK_MS - 1), 0u);
  EXPECT_EQ(fake::AdvanceTimers(1), 1u);
  EXPECT_EQ(fake::AdvanceTimers(TICK_MS), 1u);
  EXPECT_THAT(Sent(), ElementsAre("1004", "1004"));
  Drain();
}

TEST_F(SchedulerEvents, ATickRefillsAListThatHasRunOut) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  StartedScheduler();
  for (int tick = 0; tick < 2; ++tick) {
    fake::AdvanceTimers(TICK_MS);
    Drain();
  }
  EXPECT_THAT(LaunchedApps(), ElementsAre("a.service", "b.service", "a.service"));
}

TEST_F(SchedulerEvents, ATickLeavesTheCurrentServiceAppAloneAndMovesOn) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  MakeCurrent(a.record);
  AppInfoCache::GetInstance()->AddSchedulingItem("b");
  EXPECT_TRUE(Handle(EVENT_RESET_SCHEDULER));
  EXPECT_THAT(LaunchedApps(), ElementsAre("b.service"));
  EXPECT_EQ(fake::CallCount("app_manager_is_running"), 0u);
  EXPECT_TRUE(fake::IsRunning("a.service"));
  Forget();
  Scheduler().TerminateCurrentServiceApp();
  EXPECT_EQ(fake::LogTexts().at(0), "[Info] Current ServiceApp ID : b.service");
}

TEST_F(SchedulerEvents, AFailedLaunchOnATickIsLogged) {
  CustomFeeder a("a");
  Scheduler();
  fake::QueueLaunchResults({-5});
  EXPECT_TRUE(Handle(EVENT_RESET_SCHEDULER));
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[ERROR] AppControlUtils::LaunchApp() return false.",
                                    "[Debug] LaunchNextItem() return false."})));
}

TEST_F(SchedulerEvents, AStopComesToRest) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  StartedScheduler();
  Forget();
  EXPECT_TRUE(Handle(EVENT_STOP_SCHEDULER));
  EXPECT_EQ(fake::LogTexts().at(1), "[Debug] [EVENT_STOP_SCHEDULER]");
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] StopScheduler() return false.")));
  EXPECT_EQ(g_nSchedulerTimerID, 0u);
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
}

TEST_F(SchedulerEvents, TheNextItemIsLaunchedAfterTheCurrentWasEnded) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  MakeCurrent(a.record, 4711);
  AppInfoCache::GetInstance()->AddSchedulingItem("b");
  EXPECT_TRUE(Handle(EVENT_LAUNCH_NEXT_ITEM));
  EXPECT_EQ(fake::LogTexts().at(2), "[Debug] [EVENT_LAUNCH_NEXT_ITEM]");
  EXPECT_THAT(KilledPids(), ElementsAre(4711));
  EXPECT_THAT(LaunchedApps(), ElementsAre("b.service"));
  EXPECT_LT(fake::Calls("kill").at(0).seq,
            fake::Calls("app_control_send_launch_request").at(0).seq);
}

TEST_F(SchedulerEvents, AFailedEndDoesNotKeepTheNextItemFromLaunching) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  MakeCurrent(a.record);
  AppInfoCache::GetInstance()->AddSchedulingItem("b");
  fake::Fail("app_manager_terminate_app", -5, 2);
  EXPECT_TRUE(Handle(EVENT_LAUNCH_NEXT_ITEM));
  EXPECT_THAT(LaunchedApps(), ElementsAre("b.service"));
  fake::SetRunning("b.service", 4712);
  AppInfoCache::GetInstance()->AddSchedulingItem("a");
  EXPECT_TRUE(Handle(EVENT_APP_TERMINATED));
  EXPECT_THAT(LaunchedApps(), ElementsAre("b.service", "a.service"));
}

TEST_F(SchedulerEvents, ANextItemThatIsNotThereIsLogged) {
  EXPECT_TRUE(Handle(EVENT_LAUNCH_NEXT_ITEM));
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Info] pEvent : 1005", "[Debug] [EVENT_LAUNCH_NEXT_ITEM]",
                  "[Info] m_vSchedulingList.size() : 0", "[Debug] Scheduling List is empty!!!",
                  "[Debug] LaunchNextItem() return false."));
}

TEST_F(SchedulerEvents, AfterAnAppHasFinishedTheNextOneRuns) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  MakeCurrent(a.record, 4711);
  AppInfoCache::GetInstance()->AddSchedulingItem("b");
  EXPECT_TRUE(Handle(EVENT_APP_TERMINATED));
  EXPECT_THAT(KilledPids(), ElementsAre(4711));
  EXPECT_THAT(LaunchedApps(), ElementsAre("b.service"));
}

TEST_F(SchedulerEvents, AfterTheLastAppHasFinishedTheListIsNotRefilled) {
  CustomFeeder a("a");
  MakeCurrent(a.record, 4711);
  EXPECT_TRUE(Handle(EVENT_APP_TERMINATED));
  EXPECT_THAT(KilledPids(), ElementsAre(4711));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] Scheduling List is empty!!!")));
}

TEST_F(SchedulerEvents, AFailedLaunchAfterAnAppHasFinishedIsNotLoggedASecondTime) {
  CustomFeeder a("a");
  Scheduler();
  AppInfoCache::GetInstance()->AddSchedulingItem("a");
  fake::QueueLaunchResults({-5});
  EXPECT_TRUE(Handle(EVENT_APP_TERMINATED));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] LaunchNextItem() return false.")));
}

TEST_F(SchedulerEvents, AnExceptionEndsInTheTaskAndTheNextEventIsHandled) {
  CustomFeeder a("a");
  Scheduler();
  a.record.SetReadHook([] { throw std::runtime_error("a cannot be read"); });
  EXPECT_TRUE(Handle(EVENT_RESET_SCHEDULER));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : a cannot be read"));
  a.record.SetReadHook(nullptr);
  EXPECT_TRUE(Handle(EVENT_RESET_SCHEDULER));
  EXPECT_THAT(LaunchedApps(), ElementsAre("a.service"));
}

TEST_F(SchedulerEvents, AnExceptionEndsInTheCallbacks) {
  Scheduler();
  allocations::FailNext();
  EXPECT_NO_THROW(EXPECT_EQ(OnSchedulerTimer(nullptr), 1)) << "the timer still repeats";
  EXPECT_FALSE(allocations::CancelFailure());
  fake::SetKey(TIME_KEY, 1);
  std::atomic<bool> flag{false};
  allocations::FailNext();
  EXPECT_NO_THROW(OnSetTimeChanged(nullptr, &flag));
  EXPECT_FALSE(allocations::CancelFailure());
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : std::bad_alloc",
                                             "[ERROR] exception : std::bad_alloc"));
}

TEST_F(SchedulerEvents, AnEventIsSentNeitherUrgentlyNorWaitedFor) {
  EXPECT_TRUE(Scheduler().t_SendEvent(EVENT_RESET_SCHEDULER));
  EXPECT_THAT(fake::CallTexts({"FCTask::Send"}),
              ElementsAre("FCTask::Send(ORVScheduler, 1004, false, false) = true"));
  Drain();
}

TEST_F(SchedulerEvents, AFullQueueRefusesAndTellsItsSize) {
  CustomFeeder a("a");
  Scheduler();
  fake::SetRecording(false);
  Gate gate;
  a.record.SetReadHook([&gate] { gate.Pass(); });
  ASSERT_TRUE(Scheduler().t_SendEvent(EVENT_RESET_SCHEDULER));
  ASSERT_TRUE(gate.WaitUntilReached());
  int accepted = 0;
  while (accepted <= 0x2000 && Scheduler().t_SendEvent(999)) {
    ++accepted;
  }
  EXPECT_EQ(accepted, 0x2000);
  EXPECT_EQ(fake::LogTexts(6).back(),
            "[ERROR] Send() return False!!, Name[ORVScheduler] Type[999] P0[0] P1[0] Size[8192]");
  EXPECT_EQ(Scheduler().GetQueue()->Size(), 0x2000);
  Scheduler().t_PurgeEvents();
  EXPECT_EQ(Scheduler().GetQueue()->Size(), 0);
  gate.Open();
  Drain();
}

}  // namespace
