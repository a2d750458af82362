// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/AppPreloadingUtils.h"

#include <app_control.h>
#include <dlog.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <stdexcept>

#include "fake/control/apps.h"
#include "fake/control/calls.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"
#include "fake/control/timers.h"
#include "support/log_matchers.h"

namespace {

using AppPreloadingUtils::AddWebStatusChangedCallback;
using AppPreloadingUtils::PreloadAppAndRegisterAppStatusChangedCB;
using AppPreloadingUtils::RegisterAppStatusVconfCallback;
using AppPreloadingUtils::RemoveWebStatusChangedCallback;
using AppPreloadingUtils::UnregisterAppStatusVconfCallback;
using AppPreloadingUtils::WebAppStatusCallback;
using support::HasLog;
using support::HasLogsInOrder;
using support::HasLogTimes;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr unsigned int RETRY_PERIOD_MS = 5000;
constexpr unsigned int CHECK_PERIOD_MS = 2000;

const std::string APP = "AbCdEfGhIj.app";
const std::string KEY = "rtc/memory/WebApp/" + APP;
const std::string OTHER = "ZyXwVuTsRq.other";
const std::string OTHER_KEY = "rtc/memory/WebApp/" + OTHER;

/// What the callbacks received: "name status".
std::vector<std::string>& Told() {
  static std::vector<std::string> told;
  return told;
}

void Tell(int eStatus, void* pUserData) {
  Told().push_back(static_cast<const char*>(pUserData) + (" " + std::to_string(eStatus)));
}

WebAppStatusCallback Teller(const char* pName) {
  return {&Tell, const_cast<char*>(pName)};
}

class AppPreloadingUtilsTest : public testing::Test {
 protected:
  bool Preload(const std::string& rApp = APP, const std::string& rType = "type",
               const char* pName = "told") {
    return PreloadAppAndRegisterAppStatusChangedCB(rApp, rType, Teller(pName));
  }
  void Follow() {
    ASSERT_TRUE(Preload());
    Forget();
  }
  /// The web runtime writes the status, and the main loop delivers it.
  void Enter(const std::string& rWord, const std::string& rKey = KEY) {
    fake::SetKey(rKey, rWord);
    fake::DeliverKeyChanges();
  }
  /// The first launch is rejected: the retry timer runs.
  void Reject() {
    fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED});
    ASSERT_TRUE(Preload());
    ASSERT_EQ(fake::TimersOf(RETRY_PERIOD_MS).size(), 1u);
    Forget();
  }
  void Forget() {
    Told().clear();
    fake::ClearLog();
    fake::ClearCalls();
    fake::ClearLaunches();
  }
  std::vector<std::string> Errors() { return fake::LogTexts(DLOG_ERROR); }
  std::vector<std::string> KeyCalls() {
    return fake::CallTexts({"vconf_notify_key_changed", "vconf_ignore_key_changed"});
  }

  static std::string Notify(const std::string& rKey, int iResult = 0) {
    return "vconf_notify_key_changed(" + rKey + ", set, null) = " + std::to_string(iResult);
  }
  static std::string Ignore(const std::string& rKey, int iResult = 0) {
    return "vconf_ignore_key_changed(" + rKey + ", set) = " + std::to_string(iResult);
  }
};

// The first preload.

TEST_F(AppPreloadingUtilsTest, APreloadLaunchesInTheBackgroundAndSubscribesToTheAppsKey) {
  EXPECT_TRUE(Preload());
  ASSERT_EQ(fake::Launches().size(), 1u);
  EXPECT_EQ(fake::Launches()[0].app, APP);
  EXPECT_EQ(fake::Launches()[0].operation, APP_CONTROL_OPERATION_DEFAULT);
  EXPECT_THAT(fake::Launches()[0].extra,
              ElementsAre(std::make_pair(std::string(ORV_LAUNCH_MODE_KEY),
                                         std::string("backgroundAtStartup"))));
  EXPECT_THAT(KeyCalls(), ElementsAre(Notify(KEY)));
  char aCallback[128];
  std::snprintf(aCallback, sizeof(aCallback),
                "pCallbackFuncPtr : %p, pUserData : ", reinterpret_cast<void*>(&Tell));
  std::vector<std::string> texts = fake::LogTexts();
  ASSERT_GE(texts.size(), 2u);
  EXPECT_EQ(texts.back(), "[Debug] sVconfKey = " + KEY);
  EXPECT_THAT(texts[texts.size() - 2],
              testing::StartsWith("[Info] rAppID : " + APP + ", rAppType : type, " + aCallback));
  EXPECT_THAT(fake::Timers(), IsEmpty());
}

TEST_F(AppPreloadingUtilsTest, ACallbackOfTwoNullPointersIsLoggedAsSuch) {
  EXPECT_TRUE(PreloadAppAndRegisterAppStatusChangedCB(APP, "type", WebAppStatusCallback()));
  char aText[256];
  std::snprintf(aText, sizeof(aText),
                "[Info] rAppID : %s, rAppType : type, pCallbackFuncPtr : %p, pUserData : %p",
                APP.c_str(), static_cast<void*>(nullptr), static_cast<void*>(nullptr));
  EXPECT_THAT(fake::LogTexts(), HasLog(aText));
}

TEST_F(AppPreloadingUtilsTest, AnAppThatIsUpIsNotLaunchedAgain) {
  Follow();
  for (const char* pWord : {"preload", "resume", "pause"}) {
    Enter(pWord);
    Forget();
    EXPECT_TRUE(Preload()) << pWord;
    EXPECT_THAT(fake::Launches(), IsEmpty()) << pWord;
    EXPECT_THAT(KeyCalls(), IsEmpty()) << pWord;
    EXPECT_EQ(fake::LogTexts().size(), 1u) << pWord;
  }
}

TEST_F(AppPreloadingUtilsTest, AnAppInAnyOtherStateIsLaunchedAgain) {
  Follow();
  for (const char* pWord : {"init", "load", "destroy", "quit", "no word"}) {
    Enter(pWord);
    Forget();
    EXPECT_TRUE(Preload()) << pWord;
    EXPECT_EQ(fake::Launches().size(), 1u) << pWord;
    EXPECT_EQ(fake::LogTexts().back(), "[Debug] Already regitered.") << pWord;
  }
}

TEST_F(AppPreloadingUtilsTest, AnAppThatIsUpTakesOneMoreCallback) {
  Follow();
  Enter("resume");
  EXPECT_TRUE(Preload(APP, "another", "second"));
  Forget();
  Enter("pause");
  EXPECT_THAT(Told(), ElementsAre("second 4", "told 4"));
}

TEST_F(AppPreloadingUtilsTest, AnotherAppIsLaunchedAlthoughTheFirstIsUp) {
  Follow();
  Enter("resume");
  Forget();
  EXPECT_TRUE(Preload(OTHER));
  ASSERT_EQ(fake::Launches().size(), 1u);
  EXPECT_EQ(fake::Launches()[0].app, OTHER);
}

TEST_F(AppPreloadingUtilsTest, ARejectedLaunchIsASuccessThatIsTriedAgainLater) {
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED});
  EXPECT_TRUE(Preload());
  EXPECT_THAT(fake::CallTexts({"g_timeout_add_seconds", "vconf_notify_key_changed"}),
              ElementsAre("g_timeout_add_seconds(5, set, null) = 1"));
}

TEST_F(AppPreloadingUtilsTest, ASecondRejectedLaunchStartsNoSecondTimer) {
  Reject();
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED});
  EXPECT_TRUE(Preload());
  EXPECT_EQ(fake::TimersOf(RETRY_PERIOD_MS).size(), 1u);
}

TEST_F(AppPreloadingUtilsTest, AnAppThatIsNotThereIsAFailure) {
  fake::QueueLaunchResults({APP_CONTROL_ERROR_APP_NOT_FOUND});
  EXPECT_FALSE(Preload());
  EXPECT_EQ(Errors().back(), "[ERROR] Cannot find target app.");
  EXPECT_THAT(KeyCalls(), IsEmpty());
  EXPECT_THAT(fake::Timers(), IsEmpty());
  // The callback was not entered.
  RemoveWebStatusChangedCallback(APP, "type");
  EXPECT_EQ(fake::LogTexts().back(), "[Debug] Cannot find target callback function.");
}

TEST_F(AppPreloadingUtilsTest, AnyOtherCodeIsAFailure) {
  for (const int iCode : {int(APP_CONTROL_ERROR_LAUNCH_FAILED), int(APP_CONTROL_ERROR_TIMED_OUT),
                          int(APP_CONTROL_ERROR_IO_ERROR), 1}) {
    fake::QueueLaunchResults({iCode});
    EXPECT_FALSE(Preload()) << iCode;
    EXPECT_EQ(Errors().back(), "[ERROR] SendRequestforPreloading() failed.") << iCode;
  }
  EXPECT_THAT(KeyCalls(), IsEmpty());
  EXPECT_THAT(fake::Timers(), IsEmpty());
}

TEST_F(AppPreloadingUtilsTest, AKeyThatCannotBeSubscribedToIsAFailureWithTheCallbackEntered) {
  fake::Fail("vconf_notify_key_changed", -1);
  EXPECT_FALSE(Preload());
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] Error, vconf_notify_key_changed() return -1."));
  RemoveWebStatusChangedCallback(APP, "type");
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] Cannot find target callback function.")));
}

// The retry timer.

TEST_F(AppPreloadingUtilsTest, ARetryThatWorksSubscribesAndEndsTheTimer) {
  Reject();
  EXPECT_EQ(fake::FireTimersOf(RETRY_PERIOD_MS), 1u);
  ASSERT_EQ(fake::Launches().size(), 1u);
  EXPECT_EQ(fake::Launches()[0].extra.size(), 1u);
  EXPECT_THAT(KeyCalls(), ElementsAre(Notify(KEY)));
  EXPECT_THAT(fake::Timers(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] ", "[Info] count = 0", "[Debug] sVconfKey = " + KEY})));
}

TEST_F(AppPreloadingUtilsTest, ARetryThatFailsIsCountedAndTheTimerGoesOn) {
  Reject();
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED, APP_CONTROL_ERROR_IO_ERROR});
  fake::FireTimersOf(RETRY_PERIOD_MS);
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_EQ(fake::TimersOf(RETRY_PERIOD_MS).size(), 1u);
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] count = 0", "[Info] count = 1", "[Info] count = 2"})));
  EXPECT_THAT(fake::Timers(), IsEmpty());
}

TEST_F(AppPreloadingUtilsTest, ARetryThatCannotSubscribeIsCountedAndTheTimerGoesOn) {
  Reject();
  fake::Fail("vconf_notify_key_changed", -1);
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_EQ(fake::TimersOf(RETRY_PERIOD_MS).size(), 1u);
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] count = 1"));
  EXPECT_THAT(fake::Timers(), IsEmpty());
}

TEST_F(AppPreloadingUtilsTest, AnAppThatIsNotThereEndsTheRetriesQuietly) {
  Reject();
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED, APP_CONTROL_ERROR_APP_NOT_FOUND});
  fake::FireTimersOf(RETRY_PERIOD_MS);
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_THAT(fake::Timers(), IsEmpty());
  EXPECT_THAT(Errors(), Not(HasLog("[ERROR] Cannot find target app.")));
  EXPECT_THAT(KeyCalls(), IsEmpty());
  // The next rejection starts counting from 0.
  Reject();
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] count = 0"));
}

TEST_F(AppPreloadingUtilsTest, TheTwentySecondTickLaunchesInTheForegroundAndEndsTheTimer) {
  Reject();
  fake::SetLaunchHook([](const fake::Launch& rLaunch) {
    return rLaunch.extra.empty() ? 0 : int(APP_CONTROL_ERROR_LAUNCH_REJECTED);
  });
  for (int i = 0; i < 21; ++i) {
    fake::FireTimersOf(RETRY_PERIOD_MS);
  }
  EXPECT_EQ(fake::Launches().size(), 21u);
  EXPECT_EQ(fake::Launches().back().extra.size(), 1u);
  EXPECT_EQ(fake::TimersOf(RETRY_PERIOD_MS).size(), 1u);
  Forget();
  fake::FireTimersOf(RETRY_PERIOD_MS);
  ASSERT_EQ(fake::Launches().size(), 1u);
  EXPECT_EQ(fake::Launches()[0].app, APP);
  EXPECT_EQ(fake::Launches()[0].operation, APP_CONTROL_OPERATION_DEFAULT);
  EXPECT_THAT(fake::Launches()[0].extra, IsEmpty());
  EXPECT_THAT(fake::Timers(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] ", "[Info] rAppID : " + APP));
  fake::SetLaunchHook(nullptr);
  // The next rejection starts counting from 0.
  Reject();
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] count = 0"));
}

TEST_F(AppPreloadingUtilsTest, TheRetriesComeEveryFiveSeconds) {
  Reject();
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED});
  EXPECT_EQ(fake::AdvanceTimers(4999), 0u);
  EXPECT_EQ(fake::AdvanceTimers(1), 1u);
  EXPECT_EQ(fake::AdvanceTimers(5000), 1u);
  EXPECT_EQ(fake::AdvanceTimers(60000), 0u);
}

// The statuses.

TEST_F(AppPreloadingUtilsTest, AChangeThatComesBeforeTheSubscriptionIsRecordedIsPassedOver) {
  AppPreloadingUtils::WebAppStatusChangedCallback(nullptr, nullptr);
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(AppPreloadingUtilsTest, InitLoadAndDestroyNotifyNoCallbackAndStartNothing) {
  Follow();
  for (const char* pWord : {"init", "load", "destroy"}) {
    Enter(pWord);
  }
  EXPECT_THAT(Told(), IsEmpty());
  EXPECT_THAT(fake::Timers(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] sAppStatus = init", "[Debug] sAppStatus = load",
                          "[Debug] sAppStatus = destroy"));
}

TEST_F(AppPreloadingUtilsTest, PreloadStartsTheCheckAndNotifiesNoCallbackYet) {
  Follow();
  Enter("preload");
  EXPECT_THAT(Told(), IsEmpty());
  EXPECT_THAT(fake::CallTexts({"g_timeout_add_seconds"}),
              ElementsAre("g_timeout_add_seconds(2, set, null) = 1"));
}

TEST_F(AppPreloadingUtilsTest, PreloadWithARunningCheckTellsAtOnce) {
  Follow();
  Enter("preload");
  Enter("preload");
  EXPECT_THAT(Told(), ElementsAre("told 2"));
  EXPECT_EQ(fake::TimersOf(CHECK_PERIOD_MS).size(), 1u);
}

TEST_F(AppPreloadingUtilsTest, ResumeEndsTheCheckAndTells) {
  Follow();
  Enter("preload");
  Enter("resume");
  EXPECT_THAT(Told(), ElementsAre("told 3"));
  EXPECT_THAT(fake::CallTexts({"g_source_remove"}), ElementsAre("g_source_remove(1) = 1"));
  EXPECT_THAT(fake::Timers(), IsEmpty());
  // The id is forgotten: the next "preload" starts a check again.
  Enter("preload");
  EXPECT_EQ(fake::TimersOf(CHECK_PERIOD_MS).size(), 1u);
  EXPECT_THAT(Told(), ElementsAre("told 3"));
}

TEST_F(AppPreloadingUtilsTest, ResumeWithoutACheckTells) {
  Follow();
  Enter("resume");
  EXPECT_THAT(Told(), ElementsAre("told 3"));
  EXPECT_EQ(fake::CallCount("g_source_remove"), 0u);
}

TEST_F(AppPreloadingUtilsTest, PauseAndQuitWithARunningCheckNotifyNoCallback) {
  Follow();
  Enter("preload");
  Forget();
  Enter("pause");
  Enter("quit");
  EXPECT_THAT(Told(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] sAppStatus = pause", "[Debug] LMKTimer is running.",
                          "[Debug] sAppStatus = quit", "[Debug] LMKTimer is running."));
}

TEST_F(AppPreloadingUtilsTest, PauseAndQuitWithoutACheckTell) {
  Follow();
  Enter("pause");
  Enter("quit");
  EXPECT_THAT(Told(), ElementsAre("told 4", "told 6"));
}

TEST_F(AppPreloadingUtilsTest, AWordOutsideTheTableOnlyMakesTheStatusInvalid) {
  Follow();
  Enter("resume");
  Forget();
  for (const char* pWord : {"Resume", "resume ", ""}) {
    Enter(pWord);
  }
  EXPECT_THAT(Told(), IsEmpty());
  EXPECT_THAT(fake::Timers(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), HasLogTimes("[Debug] m_iCurrentWebAppStatus is invalid.", 3));
  AppPreloadingUtils::NotifyWebAppStatus();
  EXPECT_THAT(Told(), ElementsAre("told -1"));
}

TEST_F(AppPreloadingUtilsTest, AKeyThatWasRemovedHasNoWord) {
  Follow();
  Enter("resume");
  Forget();
  fake::UnsetKey(KEY);
  EXPECT_EQ(fake::DeliverKeyChanges(), 1u);
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] sAppStatus = ", "[Debug] m_iCurrentWebAppStatus is invalid."));
}

// The low-memory timer.

TEST_F(AppPreloadingUtilsTest, AnAppThatLivesThroughThePeriodIsToldAndTheCheckEnds) {
  Follow();
  Enter("preload");
  Forget();
  EXPECT_EQ(fake::AdvanceTimers(1999), 0u);
  EXPECT_EQ(fake::AdvanceTimers(1), 1u);
  EXPECT_THAT(Told(), ElementsAre("told 2"));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] m_iCurrentWebAppStatus : 2, count : 0"));
  EXPECT_THAT(fake::Timers(), IsEmpty());
  EXPECT_THAT(fake::Launches(), IsEmpty());
}

TEST_F(AppPreloadingUtilsTest, TheIdOfACheckThatEndedSoIsKept) {
  Follow();
  Enter("preload");
  fake::FireTimersOf(CHECK_PERIOD_MS);
  Forget();
  Enter("preload");  // finds a running check
  EXPECT_THAT(Told(), ElementsAre("told 2"));
  EXPECT_THAT(fake::Timers(), IsEmpty());
  Enter("quit");  // finds it too
  EXPECT_EQ(fake::LogTexts().back(), "[Debug] LMKTimer is running.");
  Enter("resume");  // removes the ended check
  EXPECT_THAT(fake::CallTexts({"g_source_remove"}), ElementsAre("g_source_remove(1) = 0"));
  EXPECT_THAT(Told(), ElementsAre("told 2", "told 3"));
}

TEST_F(AppPreloadingUtilsTest, AnInvalidStatusCountsAsAlive) {
  Follow();
  Enter("preload");
  Enter("no word");
  fake::FireTimersOf(CHECK_PERIOD_MS);
  EXPECT_THAT(Told(), ElementsAre("told -1"));
  EXPECT_THAT(fake::Launches(), IsEmpty());
}

TEST_F(AppPreloadingUtilsTest, AnAppThatWasDestroyedIsLaunchedAgainAtTheTick) {
  Follow();
  Enter("preload");
  Enter("destroy");
  EXPECT_THAT(fake::Launches(), IsEmpty());
  Forget();
  fake::FireTimersOf(CHECK_PERIOD_MS);
  ASSERT_EQ(fake::Launches().size(), 1u);
  EXPECT_EQ(fake::Launches()[0].app, APP);
  EXPECT_EQ(fake::Launches()[0].extra.size(), 1u);
  EXPECT_EQ(fake::LogTexts().front(), "[Info] m_iCurrentWebAppStatus : 5, count : 0");
  EXPECT_THAT(Told(), IsEmpty());
  EXPECT_EQ(fake::TimersOf(CHECK_PERIOD_MS).size(), 1u);
}

TEST_F(AppPreloadingUtilsTest, AnAppThatQuitDuringTheCheckIsLaunchedAgainToo) {
  Follow();
  Enter("preload");
  Enter("quit");
  fake::FireTimersOf(CHECK_PERIOD_MS);
  EXPECT_EQ(fake::Launches().size(), 1u);
}

TEST_F(AppPreloadingUtilsTest, ACheckThatGoesOnHasForgottenItsId) {
  Follow();
  Enter("preload");
  Enter("destroy");
  fake::FireTimersOf(CHECK_PERIOD_MS);
  Forget();
  Enter("preload");  // does not recognise the running check
  EXPECT_EQ(fake::TimersOf(CHECK_PERIOD_MS).size(), 2u);
  EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(AppPreloadingUtilsTest, AfterTwentyOneRelaunchesTheAppIsGivenUp) {
  Follow();
  Enter("preload");
  Enter("destroy");
  for (int i = 0; i < 21; ++i) {
    fake::FireTimersOf(CHECK_PERIOD_MS);
  }
  EXPECT_EQ(fake::Launches().size(), 21u);
  EXPECT_EQ(fake::TimersOf(CHECK_PERIOD_MS).size(), 1u);
  Forget();
  fake::FireTimersOf(CHECK_PERIOD_MS);
  EXPECT_THAT(fake::Launches(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] m_iCurrentWebAppStatus : 5, count : 21"));
  EXPECT_THAT(fake::Timers(), IsEmpty());
  EXPECT_THAT(Told(), IsEmpty());
  // The next check starts counting from 0.
  Enter("preload");
  Enter("destroy");
  fake::FireTimersOf(CHECK_PERIOD_MS);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] m_iCurrentWebAppStatus : 5, count : 0"));
  EXPECT_EQ(fake::Launches().size(), 1u);
}

TEST_F(AppPreloadingUtilsTest, TheResultOfARelaunchIsNotLookedAt) {
  Follow();
  Enter("preload");
  Enter("destroy");
  fake::QueueLaunchResults({APP_CONTROL_ERROR_APP_NOT_FOUND});
  fake::FireTimersOf(CHECK_PERIOD_MS);
  EXPECT_EQ(fake::TimersOf(CHECK_PERIOD_MS).size(), 1u);
}

// The callbacks.

TEST_F(AppPreloadingUtilsTest, CallbacksAreToldInTheOrderOfTheirTypes) {
  ASSERT_TRUE(Preload(APP, "b", "second"));
  ASSERT_TRUE(Preload(APP, "c", "third"));
  ASSERT_TRUE(Preload(APP, "a", "first"));
  Enter("resume");
  EXPECT_THAT(Told(), ElementsAre("first 3", "second 3", "third 3"));
}

TEST_F(AppPreloadingUtilsTest, ACallbackWithANullFunctionIsPassedOver) {
  ASSERT_TRUE(PreloadAppAndRegisterAppStatusChangedCB(APP, "a", WebAppStatusCallback()));
  ASSERT_TRUE(Preload(APP, "b", "second"));
  Enter("resume");
  EXPECT_THAT(Told(), ElementsAre("second 3"));
}

TEST_F(AppPreloadingUtilsTest, ASecondCallbackOfATypeReplacesTheFirst) {
  ASSERT_TRUE(Preload(APP, "type", "old"));
  ASSERT_TRUE(Preload(APP, "type", "new"));
  Enter("resume");
  EXPECT_THAT(Told(), ElementsAre("new 3"));
}

TEST_F(AppPreloadingUtilsTest, TwoTypesThatFollowOneAppShareOneSubscription) {
  ASSERT_TRUE(Preload(APP, "a", "first"));
  ASSERT_TRUE(Preload(APP, "b", "second"));
  EXPECT_THAT(KeyCalls(), ElementsAre(Notify(KEY)));
  RemoveWebStatusChangedCallback(APP, "a");
  EXPECT_EQ(fake::KeySubscriptions(KEY), 1u);
  Enter("resume");
  EXPECT_THAT(Told(), ElementsAre("second 3"));
}

TEST_F(AppPreloadingUtilsTest, TheRemovalOfTheLastCallbackEndsTheSubscription) {
  Follow();
  RemoveWebStatusChangedCallback(APP, "type");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rAppID : " + APP + ", rAppType : type",
                                            "[Info] rAppID : " + APP));
  EXPECT_THAT(KeyCalls(), ElementsAre(Ignore(KEY)));
  EXPECT_EQ(fake::KeySubscriptions(KEY), 0u);
  // No app is followed now, so the next app removes no subscription.
  Forget();
  EXPECT_TRUE(Preload(OTHER));
  EXPECT_THAT(KeyCalls(), ElementsAre(Notify(OTHER_KEY)));
}

TEST_F(AppPreloadingUtilsTest, TheRemovalOfATypeThatIsNotThereIsLogged) {
  Follow();
  RemoveWebStatusChangedCallback(APP, "another");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rAppID : " + APP + ", rAppType : another",
                                            "[Debug] Cannot find target callback function."));
  EXPECT_EQ(fake::KeySubscriptions(KEY), 1u);
}

TEST_F(AppPreloadingUtilsTest, AnotherAppLosesTheCallbacksAndKeepsTheOldSubscription) {
  Follow();
  EXPECT_TRUE(Preload(OTHER, "second type", "other"));
  // It unsubscribes from the new app's key, which has no subscription.
  EXPECT_THAT(KeyCalls(), ElementsAre(Ignore(OTHER_KEY, -1)));
  EXPECT_EQ(fake::LogTexts().back(), "[Debug] Already regitered.");
  EXPECT_EQ(fake::KeySubscriptions(KEY), 1u);
  EXPECT_EQ(fake::KeySubscriptions(OTHER_KEY), 0u);
  Enter("resume");  // of the old app
  EXPECT_THAT(Told(), ElementsAre("other 3"));
}

TEST_F(AppPreloadingUtilsTest, TheFirstAppIgnoresNoKey) {
  AddWebStatusChangedCallback(APP, "type", Teller("told"));
  EXPECT_THAT(KeyCalls(), IsEmpty());
}

TEST_F(AppPreloadingUtilsTest, ASubscriptionThatIsThereIsNotMadeAgain) {
  EXPECT_TRUE(RegisterAppStatusVconfCallback(APP));
  EXPECT_TRUE(RegisterAppStatusVconfCallback(OTHER));
  EXPECT_THAT(KeyCalls(), ElementsAre(Notify(KEY)));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] sVconfKey = " + KEY, "[Debug] Already regitered."));
}

TEST_F(AppPreloadingUtilsTest, TheEndOfASubscriptionThatIsNotThereOnlyLogs) {
  AddWebStatusChangedCallback(APP, "type", Teller("told"));
  Forget();
  UnregisterAppStatusVconfCallback(APP);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rAppID : " + APP));
  EXPECT_THAT(fake::CallNames(), IsEmpty());
  // The callbacks are kept.
  AppPreloadingUtils::NotifyWebAppStatus();
  EXPECT_THAT(Told(), ElementsAre("told -1"));
}

TEST_F(AppPreloadingUtilsTest, ACallbackMayTurnToAnotherAppDuringTheWalk) {
  const WebAppStatusCallback turning(
      [](int, void*) { AddWebStatusChangedCallback(OTHER, "c", Teller("turned")); }, nullptr);
  ASSERT_TRUE(PreloadAppAndRegisterAppStatusChangedCB(APP, "a", turning));
  ASSERT_TRUE(Preload(APP, "b", "dropped"));
  Enter("resume");
  EXPECT_THAT(Told(), ElementsAre("turned 3"));
}

TEST_F(AppPreloadingUtilsTest, AnExceptionOfACallbackEndsInTheKeysCallback) {
  const WebAppStatusCallback throwing([](int, void*) { throw std::runtime_error("boom"); },
                                      nullptr);
  ASSERT_TRUE(PreloadAppAndRegisterAppStatusChangedCB(APP, "a", throwing));
  Enter("resume");
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] exception : boom"));
}

TEST_F(AppPreloadingUtilsTest, AnExceptionOfACallbackEndsInTheTimer) {
  const WebAppStatusCallback throwing([](int, void*) { throw std::runtime_error("boom"); },
                                      nullptr);
  ASSERT_TRUE(PreloadAppAndRegisterAppStatusChangedCB(APP, "a", throwing));
  Enter("preload");
  fake::FireTimersOf(CHECK_PERIOD_MS);
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] exception : boom"));
  EXPECT_EQ(fake::TimersOf(CHECK_PERIOD_MS).size(), 1u);
}

TEST_F(AppPreloadingUtilsTest, AnExceptionOfALaunchEndsInTheRetryTimer) {
  Reject();
  fake::SetLaunchHook([](const fake::Launch&) -> int { throw std::runtime_error("boom"); });
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] exception : boom"));
  EXPECT_EQ(fake::TimersOf(RETRY_PERIOD_MS).size(), 1u);
}

}  // namespace
