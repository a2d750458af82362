// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/BoostDecision.h"

#include "controller/InstallerCallbacks.h"
#include "unit/controller/boost_fixture.h"

namespace {

using support::Exists;
using support::HasLog;
using support::HasLogsInOrder;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

const char READY_FILE[] = "/tmp/hbb_ready";
const char STATUS_KEY[] = "memory/hbbtv_status";
const char LAST_SERVICE_KEY[] = "db/boot/last_service";
const char FIRST_SCREEN_APP[] = "com.kalmora.tv.csfs";
class BoostingApp : public BoostTest {};

TEST_F(BoostingApp, IsOneWhoseMetadataSaysTrue) {
  AddBoostingService("true");
  EXPECT_TRUE(Installer().m_IsBoostingApp(SERVICE));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] ch.app.boosting value is true"));
}

TEST_F(BoostingApp, AsksForThePackageOfOneService) {
  AddBoostingService("true");
  EXPECT_TRUE(Installer().m_IsBoostingApp(SERVICE));
  EXPECT_THAT(fake::CallNames(), ElementsAre("TVServiceAPI::CreateService",
                                             "TCService::FindService", "TVServiceAPI::Destroy"));
  EXPECT_THAT(fake::CallTexts({"TCService::FindService"}),
              ElementsAre("TCService::FindService(12=" + std::to_string(SERVICE) + " 179, 1) = 1"));
  EXPECT_EQ(fake::OpenHandles("TCService"), 0u);
}

TEST_F(BoostingApp, OtherValuesAreNotBoosting) {
  AddBoostingService("");
  for (const char* value : {"TRUE", "True", "1", "yes", "true ", ""}) {
    m_app.Put("orv_data", "ch.app.boosting", value);
    fake::ClearLog();
    EXPECT_FALSE(Installer().m_IsBoostingApp(SERVICE)) << value;
    EXPECT_THAT(fake::LogTexts(),
                ElementsAre(std::string("[Info] ch.app.boosting value is ") + value));
  }
}

TEST_F(BoostingApp, ARecordWithoutTheKeyIsNotBoosting) {
  fake::AddService(fake::MakeService(SERVICE, "p"));
  EXPECT_FALSE(Installer().m_IsBoostingApp(SERVICE));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] ch.app.boosting value is "));
}

TEST_F(BoostingApp, NulBytesOfTheFieldAreDroppedWhereverTheyStand) {
  m_app.Put("orv_data", "ch.app.boosting", "true");
  RecordingApp other("ab");
  other.Put("orv_data", "ch.app.boosting", "true");
  fake::AddService(fake::MakeService(SERVICE, std::string("\0a\0\0b\0", 6)));
  EXPECT_TRUE(Installer().m_IsBoostingApp(SERVICE));
}

TEST_F(BoostingApp, AFieldOfNulBytesOnlyIsEmpty) {
  fake::AddService(fake::MakeService(SERVICE, std::string(8, '\0')));
  EXPECT_FALSE(Installer().m_IsBoostingApp(SERVICE));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] PACKAGE_ID is empty"));
}

TEST_F(BoostingApp, AServiceWithoutTheFieldIsEmptyToo) {
  fake::Service service;
  service.numbers[fake::SERVICE_ID_FIELD] = SERVICE;
  fake::AddService(service);
  EXPECT_FALSE(Installer().m_IsBoostingApp(SERVICE));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] PACKAGE_ID is empty"));
}

TEST_F(BoostingApp, APackageWithoutARecordIsInvalid) {
  fake::AddService(fake::MakeService(SERVICE, "unknown"));
  EXPECT_FALSE(Installer().m_IsBoostingApp(SERVICE));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] Cannot find target AppInfo.", "[Info] invalid app"));
}

TEST_F(BoostingApp, AnUnknownServiceIsAnErrorAndNothingStaysOpen) {
  EXPECT_FALSE(Installer().m_IsBoostingApp(UINT64_MAX));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] [Error] FindService has failed"));
  EXPECT_EQ(fake::CallCount("TVServiceAPI::Destroy"), 1u);
  EXPECT_EQ(fake::OpenHandles("TCService"), 0u);
}

TEST_F(BoostingApp, ATvServiceThatCannotBeMadeIsAnError) {
  AddBoostingService("true");
  fake::Fail("TVServiceAPI::CreateService");
  EXPECT_FALSE(Installer().m_IsBoostingApp(SERVICE));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] [Error] pService is null"));
  EXPECT_EQ(fake::CallCount("TVServiceAPI::Destroy"), 0u);
}

class CurrentChannel : public BoostTest {
 protected:
  void Tune(const fake::Service& service) {
    fake::StoreKey(LAST_SERVICE_KEY, std::string("vc-service"));
    fake::SetCurrentService(service);
  }
};

TEST_F(CurrentChannel, BoostsWhenItsAppDoes) {
  AddBoostingService("true");
  Tune(fake::MakeService(SERVICE, "p"));
  EXPECT_TRUE(Installer().m_IsBoostingAppOnCurrentCh());
  EXPECT_THAT(fake::CallTexts({"TVServiceAPI::CreateServiceNavigation"}),
              ElementsAre("TVServiceAPI::CreateServiceNavigation(1, 0) = 0"));
  EXPECT_EQ(fake::OpenHandles("TCServiceNavigation"), 0u);
}

TEST_F(CurrentChannel, IsAskedForInTheModeThatTheTvIsIn) {
  AddBoostingService("true");
  Tune(fake::MakeService(SERVICE, "p"));
  fake::SetTvMode(3, 4);
  EXPECT_TRUE(Installer().m_IsBoostingAppOnCurrentCh());
  EXPECT_THAT(fake::CallTexts({"TCServiceNavigation::GetCurrentServiceInfo"}),
              ElementsAre("TCServiceNavigation::GetCurrentServiceInfo(3, 4, 12) = 1"));
}

TEST_F(CurrentChannel, AnotherLastServiceIsNoVirtualChannel) {
  AddBoostingService("true");
  Tune(fake::MakeService(SERVICE, "p"));
  fake::StoreKey(LAST_SERVICE_KEY, std::string("dvb"));
  EXPECT_FALSE(Installer().m_IsBoostingAppOnCurrentCh());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] Not Virtual ch."));
}

TEST_F(CurrentChannel, AnUnreadableLastServiceIsNoVirtualChannel) {
  EXPECT_FALSE(Installer().m_IsBoostingAppOnCurrentCh());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] key : db/boot/last_service is not valid",
                                            "[Info] Not Virtual ch."));
}

TEST_F(CurrentChannel, ANavigationThatCannotBeMadeIsAnError) {
  Tune(fake::MakeService(SERVICE, "p"));
  fake::Fail("TVServiceAPI::CreateServiceNavigation");
  EXPECT_FALSE(Installer().m_IsBoostingAppOnCurrentCh());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] pServiceNavigation is NULL."));
}

TEST_F(CurrentChannel, AnUnknownModeIsAnErrorAndTheNavigationDestroyed) {
  Tune(fake::MakeService(SERVICE, "p"));
  fake::Fail("TCServiceNavigation::GetTVMode", 0);
  EXPECT_FALSE(Installer().m_IsBoostingAppOnCurrentCh());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] GetTVMode() failed"));
  EXPECT_EQ(fake::OpenHandles("TCServiceNavigation"), 0u);
  EXPECT_EQ(fake::CallCount("TCServiceNavigation::GetCurrentServiceInfo"), 0u);
}

TEST_F(CurrentChannel, AnUnknownServiceIsAnErrorAndTheNavigationDestroyed) {
  fake::StoreKey(LAST_SERVICE_KEY, std::string("vc-service"));
  EXPECT_FALSE(Installer().m_IsBoostingAppOnCurrentCh());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] GetCurrentServiceInfo() failed"));
  EXPECT_EQ(fake::OpenHandles("TCServiceNavigation"), 0u);
}

TEST_F(CurrentChannel, AServiceWithoutAnIdIsLookedForAsAllOnes) {
  fake::Service nameless;
  nameless.texts[fake::PACKAGE_ID_FIELD] = "p";
  Tune(nameless);
  AddBoostingService("true");
  EXPECT_FALSE(Installer().m_IsBoostingAppOnCurrentCh());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] [Error] FindService has failed"));
  fake::AddService(fake::MakeService(UINT64_MAX, "p"));
  EXPECT_TRUE(Installer().m_IsBoostingAppOnCurrentCh());
}

/// The decision of the timer, a second after the start.
class TimeTimer : public BoostTest {
 protected:
  void MakeCurrentChannelBoost() {
    AddBoostingService("true");
    fake::StoreKey(LAST_SERVICE_KEY, std::string("vc-service"));
    fake::SetCurrentService(fake::MakeService(SERVICE, "p"));
  }
  /// The effect of status 6 shows the value of the first-screen flag.
  bool FirstScreenMayStillRun() {
    fake::ClearLog();
    fake::StoreKey(STATUS_KEY, 2);
    vconf_hbbtv_status_cb(nullptr, &Installer());
    const auto logs = fake::LogTexts();
    return std::find(logs.begin(), logs.end(), "[Debug] first screen already run") == logs.end();
  }
};

TEST_F(TimeTimer, ABoostingChannelWithoutAFlagGetsOne) {
  MakeCurrentChannelBoost();
  EXPECT_TRUE(Handle(1004));
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] pEvent : 1004", "[Info] TVS Time Timer",
                                    "[Info] ch.app.boosting value is true",
                                    "[Info] isBoostFile : 0, isBoostChApp : 1"})));
  EXPECT_TRUE(Exists(BoostFlag()));
  EXPECT_EQ(support::ReadFile(BoostFlag()), "");
  EXPECT_FALSE(Exists(BoostFlag() + "_dummy"));
  EXPECT_FALSE(Exists(READY_FILE));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
  EXPECT_TRUE(FirstScreenMayStillRun());
}

TEST_F(TimeTimer, NoFlagAndNoBoostingChannelOnlyEndsTheFirstScreen) {
  EXPECT_TRUE(Handle(1004));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] isBoostFile : 0, isBoostChApp : 0"));
  EXPECT_FALSE(Exists(BoostFlag()));
  EXPECT_FALSE(Exists(READY_FILE));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
  EXPECT_FALSE(FirstScreenMayStillRun());
}

TEST_F(TimeTimer, AFlagAndABoostingChannelStayAsTheyAre) {
  MakeBoostFlag();
  MakeCurrentChannelBoost();
  EXPECT_TRUE(Handle(1004));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] isBoostFile : 1, isBoostChApp : 1"));
  EXPECT_TRUE(Exists(BoostFlag()));
  EXPECT_FALSE(Exists(READY_FILE));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
  EXPECT_TRUE(FirstScreenMayStillRun());
}

TEST_F(TimeTimer, AFlagWithoutABoostingChannelReleasesTheFirstScreen) {
  MakeBoostFlag();
  bool ready = false;
  bool flag = true;
  fake::SetLaunchHook([&](const fake::Launch&) {
    ready = Exists(READY_FILE);
    flag = Exists(BoostFlag());
    return 0;
  });
  EXPECT_TRUE(Handle(1004));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] isBoostFile : 1, isBoostChApp : 0"));
  EXPECT_TRUE(ready) << "the ready file is created before the launch";
  EXPECT_FALSE(flag) << "the flag is deleted before the launch";
  EXPECT_THAT(LaunchedApps(), ElementsAre(FIRST_SCREEN_APP));
  EXPECT_EQ(fake::Launches()[0].operation, "http://tizen.org/appcontrol/operation/default");
  EXPECT_THAT(fake::Launches()[0].extra, IsEmpty());
  EXPECT_FALSE(FirstScreenMayStillRun());
}

TEST_F(TimeTimer, AFailedLookUpReleasesTheFirstScreenToo) {
  MakeBoostFlag();
  MakeCurrentChannelBoost();
  fake::Fail("TCService::FindService", 0);
  EXPECT_TRUE(Handle(1004));
  EXPECT_THAT(LaunchedApps(), ElementsAre(FIRST_SCREEN_APP));
  EXPECT_FALSE(Exists(BoostFlag()));
}

TEST_F(TimeTimer, TheReadyFileComesFirstAndItsFailureKeepsFlagAndFirstScreen) {
  MakeBoostFlag();
  support::MakeDirectories(std::string(READY_FILE) + "/not-empty");
  EXPECT_TRUE(Handle(1004));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre(testing::StartsWith("[ERROR] exception : ")));
  EXPECT_TRUE(Exists(BoostFlag()));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
  EXPECT_TRUE(FirstScreenMayStillRun());
}

TEST_F(TimeTimer, ANewFlagIsEmptyWhateverAnEarlierAttemptLeft) {
  MakeCurrentChannelBoost();
  support::WriteFile(BoostFlag() + "_dummy", "left behind");
  EXPECT_TRUE(Handle(1004));
  EXPECT_EQ(support::ReadFile(BoostFlag()), "");
  EXPECT_FALSE(Exists(BoostFlag() + "_dummy"));
}

TEST_F(TimeTimer, ANewFlagThatCouldNotBeOpenedIsRenamedAllTheSame) {
  MakeCurrentChannelBoost();
  support::MakeDirectories(BoostFlag() + "_dummy");
  EXPECT_TRUE(Handle(1004));
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
  EXPECT_TRUE(Exists(BoostFlag()));
  EXPECT_FALSE(Exists(BoostFlag() + "_dummy"));
}

TEST_F(TimeTimer, AStatusThatCameFirstDoesNotKeepTheFlagFromReleasing) {
  MakeBoostFlag();
  fake::SetKey(STATUS_KEY, 6);
  fake::DeliverKeyChanges();
  EXPECT_THAT(LaunchedApps(), ElementsAre(FIRST_SCREEN_APP));
  EXPECT_TRUE(Handle(1004));
  EXPECT_THAT(LaunchedApps(), ElementsAre(FIRST_SCREEN_APP, FIRST_SCREEN_APP));
  EXPECT_FALSE(Exists(BoostFlag()));
}

TEST_F(TimeTimer, ASecondOneDecidesAgainAndFindsNoAlarm) {
  EXPECT_TRUE(Handle(1004));
  MakeCurrentChannelBoost();
  EXPECT_TRUE(Handle(1004));
  EXPECT_TRUE(Exists(BoostFlag()));
  EXPECT_EQ(fake::CallCount("FCStateAlarm::Destroy"), 1u);
  EXPECT_FALSE(FirstScreenMayStillRun());
}

TEST_F(TimeTimer, TheAlarmIsDestroyedAfterTheDecision) {
  EXPECT_THAT(fake::Alarms(), SizeIs(1));
  EXPECT_TRUE(Handle(1004));
  EXPECT_THAT(fake::Alarms(), IsEmpty());
}

TEST_F(TimeTimer, AFlagThatCannotBeMadeEndsInTheTaskAndKeepsTheAlarm) {
  MakeCurrentChannelBoost();
  RemoveDataDirectory();
  EXPECT_TRUE(Handle(1004));
  EXPECT_THAT(fake::LogTexts(6),
              ElementsAre(testing::AllOf(testing::StartsWith("[ERROR] exception : "),
                                         testing::HasSubstr("data/hbb_boost"))));
  EXPECT_THAT(fake::Alarms(), SizeIs(1));
}

class HbbtvStatus : public BoostTest {
 protected:
  void SetStatus(int value) {
    fake::SetKey(STATUS_KEY, value);
    fake::DeliverKeyChanges();
  }
};

TEST_F(HbbtvStatus, SixLaunchesTheFirstScreenOnce) {
  MakeBoostFlag();
  SetStatus(6);
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Debug] vconf_hbbtv_status_cb", "[Debug] VCONFKEY_HBBTV_CHANGED value 6",
                  "[Debug] LAUNCHING fisrtscreen app", "[Info] rAppID : com.kalmora.tv.csfs"));
  EXPECT_THAT(LaunchedApps(), ElementsAre(FIRST_SCREEN_APP));
  EXPECT_TRUE(Exists(READY_FILE));
  EXPECT_FALSE(Exists(std::string(READY_FILE) + "_dummy"));
  EXPECT_TRUE(Exists(BoostFlag())) << "this path must not delete the flag";
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 0u);
  SetStatus(6);
  EXPECT_THAT(LaunchedApps(), SizeIs(1));
}

TEST_F(HbbtvStatus, AChangeThatIsUnderWayDuringTheLaunchFindsTheQuestionClosed) {
  SetStatus(6);
  fake::ClearLog();
  vconf_hbbtv_status_cb(nullptr, &Installer());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] vconf_hbbtv_status_cb", "[Debug] first screen already run"));
  EXPECT_THAT(LaunchedApps(), ElementsAre(FIRST_SCREEN_APP));
}

TEST_F(HbbtvStatus, TenLaunchesTheFirstScreenToo) {
  SetStatus(10);
  EXPECT_THAT(LaunchedApps(), ElementsAre(FIRST_SCREEN_APP));
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 0u);
}

TEST_F(HbbtvStatus, TheReadyFileIsThereBeforeTheLaunch) {
  bool ready = false;
  fake::SetLaunchHook([&](const fake::Launch&) {
    ready = Exists(READY_FILE);
    return 0;
  });
  SetStatus(6);
  EXPECT_TRUE(ready);
}

TEST_F(HbbtvStatus, OtherValuesDoNothing) {
  for (const int value : {2, 7, 14, -1, 0, 5, 8, 9, 11}) {
    fake::ClearLog();
    SetStatus(value);
    EXPECT_THAT(fake::LogTexts(),
                ElementsAre("[Debug] vconf_hbbtv_status_cb",
                            "[Debug] VCONFKEY_HBBTV_CHANGED value " + std::to_string(value)));
  }
  EXPECT_THAT(LaunchedApps(), IsEmpty());
  EXPECT_FALSE(Exists(READY_FILE));
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 1u);
}

TEST_F(HbbtvStatus, AnUnreadableKeyIsAnErrorAndTheCallbackStays) {
  fake::Fail("vconf_get_int");
  SetStatus(6);
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] vconf_hbbtv_status_cb", "[ERROR] vconf_get_int() failed."));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 1u);
}

TEST_F(HbbtvStatus, AfterTheDecisionTheNextChangeOnlyUnregisters) {
  Handle(1004);
  fake::ClearLog();
  fake::ClearCalls();
  SetStatus(6);
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] vconf_hbbtv_status_cb", "[Debug] first screen already run"));
  EXPECT_THAT(fake::CallTexts(),
              ElementsAre("vconf_ignore_key_changed(memory/hbbtv_status, set) = 0"));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
}

TEST_F(HbbtvStatus, ARefusedLaunchCountsAsLaunched) {
  fake::QueueLaunchResults({-13});
  SetStatus(6);
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 0u);
}

TEST_F(HbbtvStatus, AReadyFileThatCannotBeMadeEndsInTheCallback) {
  support::MakeDirectories(std::string(READY_FILE) + "/not-empty");
  EXPECT_NO_THROW(SetStatus(6));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre(testing::StartsWith("[ERROR] exception : ")));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 1u) << "the next change tries again";
}

}  // namespace
