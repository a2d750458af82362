// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_common.h>
#include <app_control.h>
#include <dlog.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <tzplatform_config.h>
#include <unistd.h>
#include <vconf.h>

#include <cstdlib>
#include <string>
#include <thread>

#include "FCTask.h"
#include "fake/control/fake.h"
#include "fake_fixture.h"
#include "support/log_matchers.h"

namespace {

using support::HasLogsInOrder;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;

// Does the same as a static initialiser of the daemon.
const std::string g_earlyPath = [] {
  char* path = app_get_shared_data_path();
  const std::string copy = path == nullptr ? "" : path;
  std::free(path);
  return copy;
}();

class Calls : public FakeTest {};

TEST_F(Calls, StandInTheOrderInWhichTheyBegan) {
  vconf_set_int("db/a", 3);
  vconf_set_str("db/b", "text");
  std::free(vconf_get_str("db/none"));
  EXPECT_THAT(fake::CallTexts(),
              ElementsAre("vconf_set_int(db/a, 3) = 0", "vconf_set_str(db/b, text) = 0",
                          "vconf_get_str(db/none) = null"));
}

TEST_F(Calls, MayDoTheirWorkAndReturnAnotherResultOnce) {
  fake::FailAfterwards("vconf_get_int", 7);
  fake::StoreKey("db/a", 3);
  int value = 0;
  EXPECT_EQ(vconf_get_int("db/a", &value), 7);
  EXPECT_EQ(value, 3);
  EXPECT_EQ(vconf_get_int("db/a", &value), 0);
  EXPECT_THAT(fake::CallTexts(), ElementsAre("vconf_get_int(db/a) = 7", "vconf_get_int(db/a) = 0"));
  EXPECT_EQ(fake::FailureCount("vconf_get_int"), 1U);
}

TEST_F(Calls, CarryTheThreadThatMadeThem) {
  std::thread::id id;
  std::thread([&] {
    pthread_setname_np(pthread_self(), "other");
    id = std::this_thread::get_id();
    vconf_set_int("db/a", 3);
  }).join();
  ASSERT_EQ(1U, fake::Calls().size());
  EXPECT_EQ("other", fake::Calls()[0].thread);
  EXPECT_EQ(id, fake::Calls()[0].threadID);
}

TEST_F(Calls, AreFilteredByNameInTheirCommonOrder) {
  vconf_set_int("db/a", 1);
  vconf_set_str("db/b", "x");
  vconf_set_int("db/a", 2);
  EXPECT_EQ(2U, fake::CallCount("vconf_set_int"));
  EXPECT_THAT(fake::CallTexts({"vconf_set_int"}),
              ElementsAre("vconf_set_int(db/a, 1) = 0", "vconf_set_int(db/a, 2) = 0"));
}

TEST_F(Calls, AreNotKeptWhileRecordingIsOff) {
  fake::SetRecording(false);
  vconf_set_int("db/a", 1);
  fake::Fail("vconf_set_int", -5);
  EXPECT_EQ(-5, vconf_set_int("db/a", 2));
  fake::SetRecording(true);
  EXPECT_THAT(fake::Calls(), IsEmpty());
}

TEST_F(Calls, OfTheFrameworkAreAmongThem) {
  FCTask task;
  fake::Fail("FCTask::Create", 0);
  EXPECT_FALSE(task.Create("Task", 1000, 8));
  EXPECT_FALSE(task.Send({task.GetHandler(), 7, nullptr, nullptr}, false, false));
  EXPECT_THAT(fake::CallTexts(), ElementsAre("FCTask::Create(Task, 1000, 8) = false",
                                             "FCTask::Send(, 7, false, false) = false"));
}

class Faults : public FakeTest {};

TEST_F(Faults, ComeAfterTheUsesThatGoWellAndEndAfterTheirTimes) {
  fake::Fail("vconf_set_int", -7, 2, 1);
  EXPECT_EQ(0, vconf_set_int("db/a", 1));
  EXPECT_EQ(-7, vconf_set_int("db/a", 2));
  EXPECT_EQ(-7, vconf_set_int("db/a", 3));
  EXPECT_EQ(0, vconf_set_int("db/a", 4));
  EXPECT_EQ(2U, fake::FailureCount("vconf_set_int"));
}

TEST_F(Faults, LeaveTheStateUntouched) {
  fake::StoreKey("db/a", 1);
  fake::Fail("vconf_set_int");
  EXPECT_EQ(-1, vconf_set_int("db/a", 2));
  EXPECT_EQ(1, fake::IntKey("db/a"));
  EXPECT_EQ(0U, fake::PendingKeyChanges());
}

TEST_F(Faults, LastUntilTheyAreClearedWhenForEver) {
  fake::Fail("vconf_get_int", -1, fake::FOREVER);
  fake::StoreKey("db/a", 1);
  int value = 9;
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(-1, vconf_get_int("db/a", &value));
  }
  EXPECT_EQ(9, value);
  fake::ClearFaults();
  EXPECT_EQ(0, vconf_get_int("db/a", &value));
  EXPECT_EQ(1, value);
}

TEST_F(Faults, OfACallThatGivesAPointerGiveNull) {
  fake::Fail("app_get_data_path");
  EXPECT_EQ(nullptr, app_get_data_path());
  fake::Fail("tzplatform_getenv");
  EXPECT_EQ(nullptr, tzplatform_getenv(TZ_USER_APP));
}

TEST_F(Faults, OfAQueueLetSendFail) {
  FCTask task;
  ASSERT_TRUE(task.Create("Task", 0, 8));
  fake::Fail("FCTask::Send", 0);
  EXPECT_FALSE(task.Send({task.GetHandler(), 7, nullptr, nullptr}, false, false));
  EXPECT_TRUE(task.Send({task.GetHandler(), 7, nullptr, nullptr}, false, false));
  task.Destroy();
}

class Paths : public FakeTest {};

TEST_F(Paths, AreThereBeforeMain) {
  EXPECT_EQ("/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data/", g_earlyPath);
}

TEST_F(Paths, AreKnownForTwoVariables) {
  EXPECT_STREQ("/opt/usr/apps", tzplatform_getenv(TZ_USER_APP));
  EXPECT_STREQ("/opt/usr/apps", tzplatform_getenv(TZ_SYS_RW_APP));
  EXPECT_EQ(nullptr, tzplatform_getenv(static_cast<tzplatform_variable>(1)));
}

class Log : public FakeTest {};

TEST_F(Log, GivesTheTextBehindTheHeadWithoutTheNewline) {
  __dlog_print(LOG_ID_MAIN, DLOG_INFO, "orv-enabler", "%s: %s(%d) > [Info] value (%d) > %s\n",
               "src/a.cpp", "operator()", 12, 5, "x");
  __dlog_print(LOG_ID_MAIN, DLOG_ERROR, "orv-enabler", "bare\n");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] value (5) > x", "bare\n"));
  EXPECT_THAT(fake::LogTexts(DLOG_INFO), ElementsAre("[Info] value (5) > x"));
  ASSERT_EQ(2U, fake::Logs().size());
  EXPECT_EQ("src/a.cpp: operator()(12) > [Info] value (5) > x\n", fake::Logs()[0].text);
  EXPECT_EQ("orv-enabler", fake::Logs()[0].tag);
  EXPECT_EQ(DLOG_ERROR, fake::Logs()[1].priority);
}

TEST_F(Log, KeepsAnEmptyTextBehindItsLevelWord) {
  __dlog_print(LOG_ID_MAIN, DLOG_INFO, "orv-enabler", "%s: %s(%d) > [Info] \n", "a.cpp", "f", 1);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] "));
}

TEST_F(Log, SharesTheOrderWithTheCalls) {
  vconf_set_int("db/a", 1);
  __dlog_print(LOG_ID_MAIN, DLOG_INFO, "orv-enabler", "one\n");
  vconf_set_int("db/a", 2);
  const auto calls = fake::Calls("vconf_set_int");
  EXPECT_LT(calls[0].seq, fake::Logs()[0].seq);
  EXPECT_LT(fake::Logs()[0].seq, calls[1].seq);
}

TEST_F(Log, LosesARecordThatFails) {
  fake::Fail("__dlog_print", -1);
  EXPECT_EQ(-1, __dlog_print(LOG_ID_MAIN, DLOG_INFO, "orv-enabler", "lost\n"));
  EXPECT_THAT(fake::Logs(), IsEmpty());
}

TEST_F(Log, IsComparedInOrder) {
  EXPECT_THAT(Texts({"a", "b", "c"}), HasLogsInOrder(Texts({"a", "c"})));
  EXPECT_THAT(Texts({"a", "b", "c"}), testing::Not(HasLogsInOrder(Texts({"c", "a"}))));
  EXPECT_THAT(Texts({"a", "b", "a"}), support::HasLogTimes("a", 2));
  EXPECT_THAT(Texts({"ab"}), testing::Not(support::HasLog("a")));
}

class Reset : public FakeTest {};

TEST_F(Reset, PutsEverythingBack) {
  fake::SetKey("db/a", 1);
  fake::Fail("vconf_set_int", -1, fake::FOREVER);
  fake::SetRunning("app", 12);
  fake::SetTime(5);
  app_control_h handle = nullptr;
  app_control_create(&handle);
  EXPECT_EQ(1U, fake::OpenHandles("app_control"));
  fake::Reset();
  EXPECT_EQ(0U, fake::OpenHandles("app_control"));
  EXPECT_FALSE(fake::HasKey("db/a"));
  EXPECT_FALSE(fake::IsRunning("app"));
  EXPECT_EQ(0, vconf_set_int("db/a", 2));
  EXPECT_GT(time(nullptr), 1000);
}

class Kill : public FakeTest {};

TEST_F(Kill, NeverReachesAProcess) {
  EXPECT_EQ(-1, kill(getpid(), SIGKILL));
  ASSERT_EQ(1U, fake::Kills().size());
  EXPECT_EQ(getpid(), fake::Kills()[0].pid);
  EXPECT_EQ(SIGKILL, fake::Kills()[0].signal);
}

}  // namespace
