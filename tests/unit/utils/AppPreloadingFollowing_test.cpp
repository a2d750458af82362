// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// Timers of AppPreloadingUtils that fire after the followed app has changed or was removed.
#include <app_control.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "fake/control/apps.h"
#include "fake/control/calls.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"
#include "fake/control/timers.h"
#include "support/log_matchers.h"
#include "support/other_thread.h"
#include "utils/AppPreloadingUtils.h"

namespace {

using AppPreloadingUtils::PreloadAppAndRegisterAppStatusChangedCB;
using AppPreloadingUtils::RemoveWebStatusChangedCallback;
using AppPreloadingUtils::UnregisterAppStatusVconfCallback;
using AppPreloadingUtils::WebAppStatusCallback;
using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned int RETRY_PERIOD_MS = 5000;
constexpr unsigned int CHECK_PERIOD_MS = 2000;
const std::string FIRST = "first.app";
const std::string SECOND = "second.app";

std::vector<int>& Told() {
  static std::vector<int> told;
  return told;
}

class AppPreloadingFollowing : public testing::Test {
 protected:
  bool Preload(const std::string& app, const std::string& type = "type") {
    return PreloadAppAndRegisterAppStatusChangedCB(
        app, type, {[](int status, void*) { Told().push_back(status); }, nullptr});
  }
  void Enter(const std::string& app, const std::string& word) {
    fake::SetKey("rtc/memory/WebApp/" + app, word);
    fake::DeliverKeyChanges();
  }
  void Destroy(const std::string& app) {
    Enter(app, "preload");
    Enter(app, "destroy");
  }
  static std::vector<std::string> LaunchedApps() {
    std::vector<std::string> apps;
    for (const fake::Launch& launch : fake::Launches()) {
      apps.push_back(launch.app);
    }
    return apps;
  }
};

TEST_F(AppPreloadingFollowing, RetriesGoToTheAppThatIsFollowedByThen) {
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED, APP_CONTROL_ERROR_LAUNCH_REJECTED});
  EXPECT_TRUE(Preload(FIRST));
  EXPECT_TRUE(Preload(SECOND));
  EXPECT_EQ(fake::TimersOf(RETRY_PERIOD_MS).size(), 1u);
  fake::ClearLaunches();
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_THAT(LaunchedApps(), ElementsAre(SECOND));
  EXPECT_EQ(fake::KeySubscriptions("rtc/memory/WebApp/" + SECOND), 1u);
  EXPECT_THAT(fake::Timers(), IsEmpty());
}

TEST_F(AppPreloadingFollowing, RetriesContinueAfterTheCallbackWasRemoved) {
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED});
  EXPECT_TRUE(Preload(FIRST));
  RemoveWebStatusChangedCallback(FIRST, "type");  // has no subscription to remove
  fake::ClearLaunches();
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_THAT(LaunchedApps(), ElementsAre(FIRST));
  EXPECT_EQ(fake::KeySubscriptions("rtc/memory/WebApp/" + FIRST), 1u);
}

TEST_F(AppPreloadingFollowing, AfterASuccessfulRetryTheNextRejectionCountsFromZero) {
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED, APP_CONTROL_ERROR_LAUNCH_REJECTED});
  EXPECT_TRUE(Preload(FIRST));
  fake::FireTimersOf(RETRY_PERIOD_MS);  // one failed retry
  fake::FireTimersOf(RETRY_PERIOD_MS);  // and one successful retry
  ASSERT_THAT(fake::Timers(), IsEmpty());
  Enter(FIRST, "quit");
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED});
  EXPECT_TRUE(Preload(FIRST));
  EXPECT_EQ(fake::TimersOf(RETRY_PERIOD_MS).size(), 1u);
  fake::ClearLog();
  fake::FireTimersOf(RETRY_PERIOD_MS);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] count = 0"));
}

TEST_F(AppPreloadingFollowing, AnAppThatPausedDuringTheCheckHasLivedThroughIt) {
  EXPECT_TRUE(Preload(FIRST));
  Enter(FIRST, "preload");
  Enter(FIRST, "pause");
  EXPECT_THAT(Told(), IsEmpty());
  fake::ClearLaunches();
  fake::FireTimersOf(CHECK_PERIOD_MS);
  EXPECT_THAT(Told(), ElementsAre(4));
  EXPECT_THAT(fake::Launches(), IsEmpty());
  EXPECT_THAT(fake::Timers(), IsEmpty());
}

TEST_F(AppPreloadingFollowing, ACheckThatOutlivesTheFollowingLaunchesAnAppWithoutAnId) {
  EXPECT_TRUE(Preload(FIRST));
  Destroy(FIRST);
  RemoveWebStatusChangedCallback(FIRST, "type");
  fake::ClearLaunches();
  fake::FireTimersOf(CHECK_PERIOD_MS);
  EXPECT_THAT(LaunchedApps(), ElementsAre(""));
  EXPECT_EQ(fake::TimersOf(CHECK_PERIOD_MS).size(), 1u);
}

TEST_F(AppPreloadingFollowing, ACheckOfTheFirstAppLaunchesTheSecond) {
  EXPECT_TRUE(Preload(FIRST));
  Destroy(FIRST);
  EXPECT_TRUE(Preload(SECOND));
  fake::ClearLaunches();
  fake::FireTimersOf(CHECK_PERIOD_MS);
  EXPECT_THAT(LaunchedApps(), ElementsAre(SECOND));
}

TEST_F(AppPreloadingFollowing, ARelaunchDoesNotChangeTheAppThatIsFollowed) {
  EXPECT_TRUE(Preload(FIRST));
  Destroy(FIRST);
  fake::FireTimersOf(CHECK_PERIOD_MS);
  fake::ClearCalls();
  Enter(FIRST, "resume");
  EXPECT_THAT(Told(), ElementsAre(3));
  EXPECT_EQ(fake::KeySubscriptions("rtc/memory/WebApp/" + FIRST), 1u);
}

TEST_F(AppPreloadingFollowing, TheCountOfRelaunchesGoesOnAfterTheAppHasLivedThroughACheck) {
  EXPECT_TRUE(Preload(FIRST));
  Destroy(FIRST);
  fake::FireTimersOf(CHECK_PERIOD_MS);  // one relaunch
  Enter(FIRST, "resume");
  fake::FireTimersOf(CHECK_PERIOD_MS);  // alive
  fake::ClearLog();
  Destroy(FIRST);
  fake::FireTimersOf(CHECK_PERIOD_MS);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] m_iCurrentWebAppStatus : 5, count : 1"));
}

TEST_F(AppPreloadingFollowing, TheEndOfTheSubscriptionDropsTheCallbacksOfAllTypesAndTheApp) {
  EXPECT_TRUE(Preload(FIRST, "one"));
  EXPECT_TRUE(Preload(FIRST, "two"));
  UnregisterAppStatusVconfCallback(FIRST);
  AppPreloadingUtils::NotifyWebAppStatus();
  EXPECT_THAT(Told(), IsEmpty());
  fake::ClearCalls();
  EXPECT_TRUE(Preload(FIRST));  // followed again: subscribes to a key, unsubscribes from none
  EXPECT_THAT(fake::CallTexts({"vconf_notify_key_changed", "vconf_ignore_key_changed"}),
              ElementsAre("vconf_notify_key_changed(rtc/memory/WebApp/first.app, set, null) = 0"));
}

TEST_F(AppPreloadingFollowing, TheStatusOutlivesTheFollowing) {
  EXPECT_TRUE(Preload(FIRST));
  Enter(FIRST, "resume");
  RemoveWebStatusChangedCallback(FIRST, "type");
  fake::ClearLaunches();
  // No app is followed, so the status does not count for the app.
  EXPECT_TRUE(Preload(FIRST));
  EXPECT_THAT(LaunchedApps(), ElementsAre(FIRST));
  fake::ClearLaunches();
  // It counts now, although the app has not sent another status.
  EXPECT_TRUE(Preload(FIRST));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
}

TEST_F(AppPreloadingFollowing, AStatusOfTheFirstAppCountsForTheSecond) {
  EXPECT_TRUE(Preload(FIRST));
  EXPECT_TRUE(Preload(SECOND));
  Enter(FIRST, "pause");
  fake::ClearLaunches();
  EXPECT_TRUE(Preload(SECOND));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
}

/// The thread that a callback starts; it must end before the callback returns.
std::unique_ptr<support::OtherThread>& Meanwhile() {
  static std::unique_ptr<support::OtherThread> thread;
  return thread;
}

TEST_F(AppPreloadingFollowing, CallbacksMayBeAddedAndRemovedElsewhereDuringACall) {
  EXPECT_TRUE(Preload(FIRST, "b"));
  EXPECT_TRUE(Preload(FIRST, "c"));
  AppPreloadingUtils::AddWebStatusChangedCallback(
      FIRST, "a",
      {[](int, void*) {
         Meanwhile() = std::make_unique<support::OtherThread>([] {
           RemoveWebStatusChangedCallback(FIRST, "a");
           RemoveWebStatusChangedCallback(FIRST, "b");
         });
         EXPECT_TRUE(Meanwhile()->WaitUntilItStops());
         EXPECT_TRUE(Meanwhile()->Done()) << "a lock is held during the call";
       },
       nullptr});
  Enter(FIRST, "resume");
  EXPECT_THAT(Told(), ElementsAre(3));  // "c" alone
  Meanwhile().reset();
}

/// For the sanitizers: the main loop iterates, reads and launches while apps are added and removed.
/// The ids are too long for a string without an allocation.
TEST_F(AppPreloadingFollowing, TheMainLoopMeetsAppsThatComeAndGo) {
  constexpr int ROUNDS = 2000;
  fake::SetRecording(false);
  const std::string apps[] = {"an.app.with.an.identifier.of.forty.characters",
                              "another.app.with.an.id.of.forty.characters.."};
  support::OtherThread decorators([&] {
    for (int i = 0; i < ROUNDS; ++i) {
      const std::string& app = apps[i % 2];
      const std::string type = "a.type.with.a.name.of.forty.characters." + std::to_string(i % 5);
      AppPreloadingUtils::AddWebStatusChangedCallback(app, type, {[](int, void*) {}, nullptr});
      AppPreloadingUtils::RegisterAppStatusVconfCallback(app);
      if (i % 3 == 0) {
        RemoveWebStatusChangedCallback(app, type);
      }
    }
  });
  while (!decorators.Done()) {
    AppPreloadingUtils::NotifyWebAppStatus();
    AppPreloadingUtils::PreloadingTimerCBFunc(nullptr);
    AppPreloadingUtils::LMKCheckingTimerCallback(nullptr);
  }
  decorators.Join();
  for (const fake::Launch& launch : fake::Launches()) {
    EXPECT_TRUE(launch.app.empty() || launch.app == apps[0] || launch.app == apps[1]) << launch.app;
  }
}

}  // namespace
