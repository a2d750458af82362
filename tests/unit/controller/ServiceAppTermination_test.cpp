// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ServiceAppTermination.h"

#include <csignal>
#include <ostream>

#include "unit/controller/scheduler_fixture.h"

namespace {

using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class Termination : public SchedulerTest {
 protected:
  /// The app of "a" is current and runs with pid 4711.
  bool TerminateRunning() {
    MakeCurrent(m_feeder.record, 4711);
    return Scheduler().TerminateCurrentServiceApp();
  }
  void ExpectForgotten() {
    Forget();
    EXPECT_TRUE(Scheduler().TerminateCurrentServiceApp());
    EXPECT_THAT(fake::CallNames(), IsEmpty());
  }
  CustomFeeder m_feeder{"a"};
};

TEST_F(Termination, WithoutACurrentItemNothingIsAsked) {
  EXPECT_TRUE(Scheduler().TerminateCurrentServiceApp());
  EXPECT_THAT(fake::CallNames(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(Termination, ARunningAppIsAskedToEndAndKilled) {
  EXPECT_TRUE(TerminateRunning());
  EXPECT_THAT(fake::CallNames(),
              ElementsAre("app_manager_is_running", "app_manager_get_app_context",
                          "app_manager_terminate_app", "app_context_destroy", "app_context_get_pid",
                          "kill"));
  ASSERT_THAT(fake::Kills(), SizeIs(1));
  EXPECT_EQ(fake::Kills()[0].pid, 4711);
  EXPECT_EQ(fake::Kills()[0].signal, SIGKILL);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] Current ServiceApp ID : a.service",
                                            "[Debug] Tartget pid : 4711"));
  ExpectForgotten();
}

TEST_F(Termination, AnAppThatHasEndedIsForgotten) {
  MakeCurrent(m_feeder.record);
  fake::SetStopped("a.service");
  EXPECT_TRUE(Scheduler().TerminateCurrentServiceApp());
  EXPECT_THAT(fake::CallNames(), ElementsAre("app_manager_is_running"));
  ExpectForgotten();
}

TEST_F(Termination, AnAppManagerThatDoesNotTellCountsAsNotRunning) {
  MakeCurrent(m_feeder.record);
  fake::Fail("app_manager_is_running", -5);
  EXPECT_TRUE(Scheduler().TerminateCurrentServiceApp());
  EXPECT_THAT(fake::CallNames(), ElementsAre("app_manager_is_running"));
  ExpectForgotten();
}

struct ManagerError {
  int code;
  const char* text;
};

/// For the names of the tests.
std::ostream& operator<<(std::ostream& stream, const ManagerError& error) {
  return stream << error.code;
}

class AppManagerError : public SchedulerTest, public testing::WithParamInterface<ManagerError> {
 protected:
  CustomFeeder m_feeder{"a"};
};

TEST_P(AppManagerError, IsLoggedWithItsTextAndTheItemIsForgotten) {
  MakeCurrent(m_feeder.record);
  fake::Fail("app_manager_get_app_context", GetParam().code);
  EXPECT_FALSE(Scheduler().TerminateCurrentServiceApp());
  EXPECT_THAT(fake::LogTexts(6),
              ElementsAre(std::string("[ERROR] app_manager_get_app_context() failed = ") +
                          GetParam().text));
  EXPECT_EQ(fake::CallCount("app_manager_terminate_app"), 0u);
  Forget();
  EXPECT_TRUE(Scheduler().TerminateCurrentServiceApp());
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Table, AppManagerError,
                         testing::Values(ManagerError{-22, "Invalid parameter"},
                                         ManagerError{-12, "Out of memory"},
                                         ManagerError{-5, "Internal I/O error"},
                                         ManagerError{-17891327, "No such application"},
                                         ManagerError{-17891325, "Database error"},
                                         ManagerError{-17891324, "Invalid package name"},
                                         ManagerError{-17891323, "App is not running"},
                                         ManagerError{-17891322, "Internal aul request error"},
                                         ManagerError{-13, "Permission denied"},
                                         ManagerError{-1073741822, "Not supported (Since 3.0)"},
                                         ManagerError{-4711, ""}));

TEST_F(Termination, ARefusedEndLeavesTheContextOpenAndKillsNothing) {
  Scheduler();
  fake::Fail("app_manager_terminate_app", -13);
  EXPECT_FALSE(TerminateRunning());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] Current ServiceApp ID : a.service",
                          "[Debug] app_manager_terminate_app() failed = Permission denied []"));
  EXPECT_EQ(fake::OpenHandles("app_context"), 1u);
  EXPECT_THAT(fake::Kills(), IsEmpty());
  EXPECT_TRUE(fake::IsRunning("a.service"));
  ExpectForgotten();
}

TEST_F(Termination, AContextThatCannotBeDestroyedIsLoggedAndTheKillFollows) {
  Scheduler();
  fake::Fail("app_context_destroy", -22);
  EXPECT_TRUE(TerminateRunning());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] Current ServiceApp ID : a.service",
                          "[Debug] app_context_destroy() failed = Invalid parameter []",
                          "[Debug] Tartget pid : 4711"));
  EXPECT_THAT(KilledPids(), ElementsAre(4711));
}

TEST_F(Termination, WithoutAPidNothingIsKilled) {
  Scheduler();
  fake::Fail("app_context_get_pid", -22);
  EXPECT_FALSE(TerminateRunning());
  EXPECT_THAT(fake::LogTexts().back(), "[Debug] Cannot get pid.(ret : -22)");
  EXPECT_THAT(fake::Kills(), IsEmpty());
  ExpectForgotten();
}

TEST_F(Termination, APidBelowOneIsNeverKilled) {
  MakeCurrent(m_feeder.record, 0);
  EXPECT_FALSE(Scheduler().TerminateCurrentServiceApp());
  EXPECT_THAT(fake::LogTexts().back(), "[Debug] Cannot get pid.(ret : 0)");
  EXPECT_THAT(fake::Kills(), IsEmpty());
}

TEST_F(Termination, APlatformThatForgetsDestroyedContextsIsAFailure) {
  fake::SetDestroyedContextsAnswer(false);
  EXPECT_FALSE(TerminateRunning());
  EXPECT_THAT(fake::LogTexts().back(), testing::StartsWith("[Debug] Cannot get pid.(ret : -"));
}

TEST_F(Termination, AKillThatFailsIsFalse) {
  MakeCurrent(m_feeder.record, 4711);
  fake::Fail("kill", -1);
  EXPECT_FALSE(Scheduler().TerminateCurrentServiceApp());
  ExpectForgotten();
}

class Stop : public SchedulerTest {
 protected:
  CustomFeeder m_feeder{"a"};
};

TEST_F(Stop, RemovesTheTimerEmptiesTheListAndEndsTheCurrentApp) {
  CustomFeeder b("b");
  StartedScheduler();
  fake::SetRunning("a.service", 4711);
  Forget();
  const std::string id = std::to_string(g_nSchedulerTimerID);
  EXPECT_TRUE(Scheduler().StopScheduler());
  EXPECT_THAT(fake::CallTexts({"g_source_remove"}), ElementsAre("g_source_remove(" + id + ") = 1"));
  EXPECT_LT(fake::Calls("g_source_remove").at(0).seq,
            fake::Calls("app_manager_is_running").at(0).seq);
  EXPECT_EQ(g_nSchedulerTimerID, 0u);
  EXPECT_THAT(fake::Timers(), IsEmpty());
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
  EXPECT_THAT(KilledPids(), ElementsAre(4711));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] ", "[Info] Current ServiceApp ID : a.service",
                                            "[Debug] Tartget pid : 4711"));
}

TEST_F(Stop, WithoutATimerTheRestIsDone) {
  CustomFeeder b("b");
  MakeCurrent(m_feeder.record, 4711);
  AppInfoCache::GetInstance()->AddSchedulingItem("b");
  EXPECT_TRUE(Scheduler().StopScheduler());
  EXPECT_EQ(fake::CallCount("g_source_remove"), 0u);
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
  EXPECT_THAT(KilledPids(), ElementsAre(4711));
}

TEST_F(Stop, AnAppThatCannotBeEndedIsLoggedAndTheResultIsTrue) {
  MakeCurrent(m_feeder.record);
  fake::Fail("app_manager_terminate_app", -5);
  EXPECT_TRUE(Scheduler().StopScheduler());
  EXPECT_THAT(fake::LogTexts(),
              HasLog("[Debug] TerminateCurrentServiceApp() return false.[ServiceID : ]"));
}

}  // namespace
