// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/CustomUIExtended.h"

#include <app_control.h>
#include <dlog.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <boost/filesystem.hpp>
#include <functional>
#include <stdexcept>
#include <thread>

#include "fake/control/apps.h"
#include "fake/control/calls.h"
#include "fake/control/clock.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"
#include "fake/control/timers.h"
#include "layers.h"
#include "support/files.h"
#include "support/log_matchers.h"
#include "support/wait_for.h"

namespace {

using support::HasLog;
using support::HasLogsInOrder;
using support::Texts;
using support::WaitFor;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using Screens = std::vector<CustomUIExtended::SupportedAppType>;

constexpr auto CHANNEL_LIST = CustomUIExtended::SUPPORTED_APP_TYPE_CHANNEL_LIST;
constexpr auto EPG = CustomUIExtended::SUPPORTED_APP_TYPE_EPG;

const std::string KEY = "db/orv_channel/custom_ui_type";
const std::string STATUS_KEY = std::string("rtc/memory/WebApp/") + layers::APP;
const std::string OPTION = "custom_ui_cold_boot_opt";
const std::string FILE_NAME = "/opt/share/orv_ch/replacement_ui_info.json";
const std::string BACKGROUND = "background_img";
const std::string LAYOUT = "org.example.layout";

class CustomUIExtendedTest : public testing::Test {
 protected:
  CustomUIExtendedTest() {
    fake::StoreKey(KEY, std::string());
    boost::filesystem::remove_all("/opt/share/orv_ch");
    // Every wait for the app lasts until the test ends it.
    fake::SetWaits(fake::Waits::Manual);
  }

  void Forget() {
    fake::ClearLog();
    fake::ClearCalls();
    fake::ClearLaunches();
  }
  void Make(const std::string& rValue, const std::string& rOption = "default") {
    m_ui = layers::Decorate<CustomUIExtended>(rValue);
    layers::Apply(*m_ui, OPTION, rOption);
    Forget();
  }
  void WriteReplacementFile() { support::WriteFile(FILE_NAME, "{\"appid\":\"" + LAYOUT + "\"}"); }
  /// Runs an operation of the layer on another thread, its caller; when this function returns, the
  /// operation's worker is waiting.
  void Begin(const std::function<void()>& operation) {
    m_bReturned = false;
    m_caller = std::thread([this, operation] {
      operation();
      m_bReturned = true;
    });
    ASSERT_TRUE(WaitFor([] { return fake::WaitingThreads() == 1; }, "the worker's wait"));
  }
  /// Ends a wait that should have ended already, so that no test hangs.
  void End() {
    EXPECT_TRUE(WaitFor([this] { return m_bReturned.load(); }, "the caller's return"));
    if (!m_bReturned) {
      fake::AdvanceWaits(60000);
    }
    m_caller.join();
  }
  static void Tell(int eStatus, void* pLayer) {
    CustomUIExtended::OnAppStatusChanged(eStatus, pLayer);
  }
  static std::string App(const std::string& rOption) {
    return "\"CustomApp\":{\"app_id\":\"AbCdEfGhIj.app\",\"cold_boot_opt\":\"" + rOption +
           "\",\"pkg_id\":\"org.example.pkg\",\"widget_id\":\"AbCdEfGhIj.widget\"}";
  }
  std::string Key() { return fake::StringKey(KEY).value_or("no such key"); }
  Screens Enabled(const std::string& rText) {
    Screens types;
    CustomUIExtended::GetEnabledAppTypes(rText, types);
    return types;
  }
  /// "channel-list=app" for each change of an operation, in order.
  static std::vector<std::string> OperationChanges() {
    std::vector<std::string> changes;
    for (const fake::Call& rCall : fake::Calls()) {
      if (rCall.name == "app_operation_set_current_app") {
        changes.push_back(ShortName(rCall.args[0]) + "=" + rCall.args[1]);
      } else if (rCall.name == "app_operation_reset_current_app") {
        changes.push_back(ShortName(rCall.args[0]) + " reset");
      }
    }
    return changes;
  }
  static std::string ShortName(const std::string& rOperation) {
    return rOperation.substr(rOperation.rfind('/') + 1);
  }
  std::vector<std::string> Errors() { return fake::LogTexts(DLOG_ERROR); }

  const std::string m_app = layers::APP;
  layers::Chain<CustomUIExtended> m_ui;
  std::atomic<bool> m_bReturned{false};
  std::thread m_caller;
};

TEST_F(CustomUIExtendedTest, TheFactoryLogsTheValueAndEntersTheOption) {
  m_ui = layers::Decorate<CustomUIExtended>("epg");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rMetadataValue : epg"));
  MetadataMap metadata;
  m_ui->GetAllMetadata(metadata);
  EXPECT_EQ(metadata, (MetadataMap{{"orv_type", {{"custom_ui_extended", "epg"}}},
                                   {"orv_data", {{"custom_ui_cold_boot_opt", ""}}}}));
}

TEST_F(CustomUIExtendedTest, TheReleaseOfNullDoesNothing) {
  CustomUIExtended::Release(nullptr);
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(CustomUIExtendedTest, ScreensAreCutAtCommasAndKeepTheirOrderAndRepeats) {
  EXPECT_EQ(Enabled("epg,channel_list,epg"), (Screens{EPG, CHANNEL_LIST, EPG}));
  EXPECT_THAT(Enabled("EPG, channel_list,info,,"), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rMetadataValue : epg,channel_list,epg",
                                            "[Info] rMetadataValue : EPG, channel_list,info,,"));
}

TEST_F(CustomUIExtendedTest, TheNumbersOfTheScreensAreFixed) {
  EXPECT_EQ(CHANNEL_LIST, 0);
  EXPECT_EQ(EPG, 1);
}

// The settings key.

TEST_F(CustomUIExtendedTest, ARunOverAnEmptyKeyWritesTheFourMembers) {
  Make("epg", "");
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "{" + App("default") + "}\n");
}

TEST_F(CustomUIExtendedTest, TheAnnouncementOfTheBannersStaysUntouched) {
  fake::StoreKey(KEY, std::string("{\"CustomBanner\":{\"app_id\":\"b\"}}"));
  Make("epg", "invisible");
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "{" + App("invisible") + ",\"CustomBanner\":{\"app_id\":\"b\"}}\n");
  m_ui->StopOperation();
  EXPECT_EQ(Key(), "{\"CustomApp\":{},\"CustomBanner\":{\"app_id\":\"b\"}}\n");
}

TEST_F(CustomUIExtendedTest, AKeyWithBrokenJsonStaysAndNoOperationIsTouched) {
  fake::StoreKey(KEY, std::string("{broken"));
  Make("epg");
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "{broken");
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] str = {broken", "[Debug] Invalid Json Str : {broken",
                          "[Debug] WriteAppInfoVconfKey() return false."));
  EXPECT_THAT(fake::CallNames(), ElementsAre("vconf_get_str"));
}

TEST_F(CustomUIExtendedTest, AKeyOfAnotherKindOfJsonRaisesAndStays) {
  fake::StoreKey(KEY, std::string("7"));
  Make("epg");
  EXPECT_FALSE(m_ui->WriteAppInfoVconfKey(false));
  EXPECT_EQ(Key(), "7");
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] Exception Caught"));
}

TEST_F(CustomUIExtendedTest, WithoutTheKeyAnExceptionLeavesTheRun) {
  fake::UnsetKey(KEY);
  Make("epg");
  EXPECT_THROW(m_ui->RunOperation(false), std::logic_error);
  EXPECT_THAT(OperationChanges(), IsEmpty());
}

// Taking over directly.

TEST_F(CustomUIExtendedTest, ARunTakesTheOperationsInTheOrderOfTheTextAndPreloads) {
  Make("epg,unknown,channel_list");
  m_ui->RunOperation(false);
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + m_app, "channel-list=" + m_app));
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_EPG), m_app);
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_CHANNEL_LIST), m_app);
  ASSERT_EQ(fake::Launches().size(), 1u);
  EXPECT_EQ(fake::Launches()[0].extra.size(), 1u);
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 1u);
  const std::vector<std::string> order = fake::CallNames();
  EXPECT_LT(std::find(order.begin(), order.end(), "vconf_set_str"),
            std::find(order.begin(), order.end(), "app_operation_set_current_app"));
  EXPECT_LT(std::find(order.begin(), order.end(), "app_operation_set_current_app"),
            std::find(order.begin(), order.end(), "app_control_create"));
}

TEST_F(CustomUIExtendedTest, AValueOfOneKnownScreenSetsOneOperation) {
  Make("epg,unknown");
  m_ui->RunOperation(false);
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + m_app));
}

TEST_F(CustomUIExtendedTest, ARunOfAKnownAppLeavesTheKeyAndTakesTheOperations) {
  Make("epg");
  fake::StoreKey(KEY, std::string("left from the earlier run"));
  m_ui->RunOperation(true);
  EXPECT_EQ(Key(), "left from the earlier run");
  EXPECT_EQ(fake::CallCount("vconf_get_str"), 0u);
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + m_app));
}

TEST_F(CustomUIExtendedTest, AnOperationThatCannotBeSetIsLoggedAndTheNextOneFollows) {
  Make("channel_list,epg");
  fake::Fail("app_operation_set_current_app", -5);
  m_ui->RunOperation(false);
  EXPECT_THAT(Errors(), HasLog("[ERROR] AppControlUtils::SetCurrentAppOfAppOperation() return "
                               "false.(eType : 0, bEnable : 1)"));
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_CHANNEL_LIST), std::nullopt);
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_EPG), m_app);
  EXPECT_EQ(fake::Launches().size(), 1u);
}

TEST_F(CustomUIExtendedTest, AnOperationThatCannotBeResetIsLoggedWithItsNumber) {
  Make("epg");
  m_ui->RunOperation(false);
  fake::Fail("app_operation_reset_current_app", -5);
  m_ui->StopOperation();
  EXPECT_THAT(Errors(), HasLog("[ERROR] AppControlUtils::SetCurrentAppOfAppOperation() return "
                               "false.(eType : 1, bEnable : 0)"));
  EXPECT_EQ(Key(), "{\"CustomApp\":{}}\n");
}

TEST_F(CustomUIExtendedTest, APreloadThatFailsOnTheDirectPathLeadsToAPlainLaunch) {
  Make("epg");
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_FAILED});
  m_ui->RunOperation(false);
  ASSERT_EQ(fake::Launches().size(), 2u);
  EXPECT_EQ(fake::Launches()[0].extra.size(), 1u);
  EXPECT_EQ(fake::Launches()[1].app, m_app);
  EXPECT_EQ(fake::Launches()[1].operation, APP_CONTROL_OPERATION_DEFAULT);
  EXPECT_THAT(fake::Launches()[1].extra, IsEmpty());
}

TEST_F(CustomUIExtendedTest, TheStatusCallbackIsEnteredWithTheLayer) {
  Make("epg");
  m_ui->RunOperation(false);
  char aText[256];
  std::snprintf(aText, sizeof(aText),
                "[Info] rAppID : %s, rAppType : custom_ui_extended, pCallbackFuncPtr : %p, "
                "pUserData : %p",
                layers::APP, reinterpret_cast<void*>(&CustomUIExtended::OnAppStatusChanged),
                static_cast<void*>(static_cast<AppInfo*>(m_ui.get())));
  EXPECT_THAT(fake::LogTexts(), HasLog(aText));
}

TEST_F(CustomUIExtendedTest, AStopOnTheDirectPathGivesBackWhatIsItsOwn) {
  Make("channel_list,epg");
  m_ui->RunOperation(false);
  fake::SetOperationApp(ORV_OPERATION_EPG, "somebody.else");
  Forget();
  m_ui->StopOperation();
  EXPECT_EQ(fake::LogTexts().front(), "[Info] In");
  EXPECT_THAT(OperationChanges(), ElementsAre("channel-list reset"));
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_EPG), "somebody.else");
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 0u);
  EXPECT_EQ(Key(), "{\"CustomApp\":{}}\n");
  EXPECT_EQ(fake::CallNames().back(), "vconf_set_str");
}

TEST_F(CustomUIExtendedTest, TheReleaseLeavesTheKeyAndTheOperations) {
  Make("epg");
  m_ui->RunOperation(false);
  Forget();
  m_ui.reset();
  EXPECT_THAT(fake::CallNames(), IsEmpty());
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_EPG), m_app);
}

TEST_F(CustomUIExtendedTest, OtherOptionsAndNoneTakeTheDirectPath) {
  WriteReplacementFile();
  for (const char* pOption : {"", "default", "invisible", "Background_img"}) {
    Make("epg", pOption);
    fake::SetOperationApp(ORV_OPERATION_EPG, std::nullopt);
    m_ui->RunOperation(true);
    EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + m_app)) << pOption;
  }
}

// Taking over through the replacement UI.

TEST_F(CustomUIExtendedTest, WithABackgroundImageTheReplacementServesUntilTheAppIsUp) {
  WriteReplacementFile();
  Make("epg,channel_list", BACKGROUND);
  Begin([this] { m_ui->RunOperation(false); });
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + LAYOUT, "channel-list=" + LAYOUT));
  EXPECT_EQ(Key(), "{" + App(BACKGROUND) + "}\n");
  EXPECT_EQ(fake::Launches().size(), 1u);
  Tell(3, m_ui.get());
  End();
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + LAYOUT, "channel-list=" + LAYOUT,
                                              "epg=" + m_app, "channel-list=" + m_app));
  EXPECT_THAT(fake::LogTexts(), HasLogsInOrder(Texts({"[Info] rMetadataValue : epg,channel_list",
                                                      "[Debug] sLayoutAppID : " + LAYOUT})));
}

TEST_F(CustomUIExtendedTest, TheWorkRunsOnAnotherThreadWhileTheCallerWaits) {
  WriteReplacementFile();
  fake::SetWaits(fake::Waits::TimeOut);
  Make("epg", BACKGROUND);
  m_ui->RunOperation(false);
  const std::vector<fake::Call> calls = fake::Calls("app_operation_set_current_app");
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_NE(calls[0].threadID, std::this_thread::get_id());
  EXPECT_EQ(calls[0].threadID, calls[1].threadID);
  EXPECT_EQ(fake::Calls("vconf_set_str")[0].threadID, std::this_thread::get_id());
}

TEST_F(CustomUIExtendedTest, AfterTwentySecondsTheAppServesReadyOrNot) {
  WriteReplacementFile();
  Make("epg", BACKGROUND);
  Begin([this] { m_ui->RunOperation(false); });
  EXPECT_EQ(fake::AdvanceWaits(19999), 0u);
  EXPECT_EQ(fake::WaitingThreads(), 1u);
  EXPECT_EQ(fake::AdvanceWaits(1), 1u);
  End();
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + LAYOUT, "epg=" + m_app));
}

TEST_F(CustomUIExtendedTest, PreloadResumeAndPauseWakeTheWaiter) {
  WriteReplacementFile();
  for (const int iStatus : {2, 3, 4}) {
    Make("epg", BACKGROUND);
    Begin([this] { m_ui->RunOperation(true); });
    Tell(iStatus, m_ui.get());
    End();
    EXPECT_EQ(OperationChanges().back(), "epg=" + m_app) << iStatus;
  }
}

TEST_F(CustomUIExtendedTest, InitLoadDestroyAndUnknownWakeNoThread) {
  WriteReplacementFile();
  Make("epg", BACKGROUND);
  Begin([this] { m_ui->RunOperation(true); });
  for (const int iStatus : {-1, 0, 1, 5, 7}) {
    Tell(iStatus, m_ui.get());
  }
  // The wait was not notified: only the time limit ends it.
  EXPECT_EQ(fake::AdvanceWaits(19999), 0u);
  EXPECT_EQ(fake::AdvanceWaits(1), 1u);
  End();
  EXPECT_EQ(OperationChanges().back(), "epg=" + m_app);
}

TEST_F(CustomUIExtendedTest, AStatusOfAnotherAppOfTheTypeWakesTheWaiterToo) {
  WriteReplacementFile();
  const auto pOther = layers::Decorate<CustomUIExtended>(
      layers::NewRecord("org.example.other", "other.app"), "epg");
  Make("epg", BACKGROUND);
  Begin([this] { m_ui->RunOperation(true); });
  Tell(4, pOther.get());
  End();
  EXPECT_EQ(OperationChanges().back(), "epg=" + m_app);
}

TEST_F(CustomUIExtendedTest, AStatusThatComesBeforeTheWaitIsLost) {
  WriteReplacementFile();
  Make("epg", BACKGROUND);
  fake::SetLaunchHook([this](const fake::Launch&) {
    Tell(3, m_ui.get());
    return 0;
  });
  Begin([this] { m_ui->RunOperation(true); });
  EXPECT_EQ(fake::AdvanceWaits(20000), 1u);
  End();
}

TEST_F(CustomUIExtendedTest, WithoutAReplacementFileTheKeyIsWrittenAndNoOperationSet) {
  Make("epg", BACKGROUND);
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "{" + App(BACKGROUND) + "}\n");
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] Invalid Json String."));
  EXPECT_THAT(OperationChanges(), IsEmpty());
  EXPECT_THAT(fake::Launches(), IsEmpty());
}

TEST_F(CustomUIExtendedTest, AnEmptyReplacementFileIsNoJsonEither) {
  support::WriteFile(FILE_NAME, "");
  Make("epg", BACKGROUND);
  m_ui->RunOperation(true);
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] Invalid Json String."));
}

TEST_F(CustomUIExtendedTest, AReplacementFileOfAnotherKindOfJsonRaises) {
  for (const char* pText : {"[1]", "{\"appid\":{}}"}) {
    support::WriteFile(FILE_NAME, pText);
    Make("epg", BACKGROUND);
    m_ui->RunOperation(true);
    EXPECT_THAT(Errors(), ElementsAre("[ERROR] Exception Caught")) << pText;
    EXPECT_THAT(OperationChanges(), IsEmpty()) << pText;
  }
}

TEST_F(CustomUIExtendedTest, AReplacementFileWithoutAnAppIDGoesOnWithAnEmptyOne) {
  support::WriteFile(FILE_NAME, "{}");
  fake::SetOperationApp(ORV_OPERATION_EPG, "somebody.else");
  fake::SetWaits(fake::Waits::TimeOut);
  Make("epg", BACKGROUND);
  m_ui->RunOperation(true);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] sLayoutAppID : "));
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=", "epg=" + m_app));
}

TEST_F(CustomUIExtendedTest, WhiteSpaceInTheReplacementFileIsGoneAlsoInTexts) {
  support::WriteFile(FILE_NAME,
                     " {\n\t\"app id\" : \"x\",\n \"appid\" : \" org. example\\tlayout \" }\n");
  fake::SetWaits(fake::Waits::TimeOut);
  Make("epg", BACKGROUND);
  m_ui->RunOperation(true);
  // The two keys become the same key, and the tab is an escape, not whitespace of the file.
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] sLayoutAppID : org.example\tlayout"));
}

TEST_F(CustomUIExtendedTest, APreloadThatFailsHandsOverAtOnceWithoutAWait) {
  WriteReplacementFile();
  Make("epg", BACKGROUND);
  fake::QueueLaunchResults({APP_CONTROL_ERROR_APP_NOT_FOUND});
  m_ui->RunOperation(true);  // would otherwise wait forever
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + LAYOUT, "epg=" + m_app));
  EXPECT_EQ(fake::Launches().size(), 1u);
}

TEST_F(CustomUIExtendedTest, AfterAFailedPreloadTheNextWorkerIsNotLockedOut) {
  WriteReplacementFile();
  Make("epg", BACKGROUND);
  fake::QueueLaunchResults({APP_CONTROL_ERROR_APP_NOT_FOUND});
  m_ui->RunOperation(true);
  fake::SetWaits(fake::Waits::TimeOut);
  m_ui->RunOperation(true);
  EXPECT_EQ(OperationChanges().size(), 4u);
}

TEST_F(CustomUIExtendedTest, WithoutAFreeThreadTheWorkIsNeverDone) {
  WriteReplacementFile();
  Make("epg", BACKGROUND);
  // No thread can have a stack of this size.
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_getattr_default_np(&attributes), 0);
  std::size_t uSize = 0;
  ASSERT_EQ(pthread_attr_getstacksize(&attributes, &uSize), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::size_t{1} << 46), 0);
  ASSERT_EQ(pthread_setattr_default_np(&attributes), 0);
  m_ui->RunOperation(false);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, uSize), 0);
  ASSERT_EQ(pthread_setattr_default_np(&attributes), 0);
  EXPECT_EQ(Key(), "{" + App(BACKGROUND) + "}\n");
  EXPECT_THAT(OperationChanges(), IsEmpty());
  EXPECT_THAT(fake::Launches(), IsEmpty());
}

TEST_F(CustomUIExtendedTest, AStopWithABackgroundImageTakesTheOperationsOver) {
  WriteReplacementFile();
  fake::SetWaits(fake::Waits::TimeOut);
  Make("epg", BACKGROUND);
  m_ui->RunOperation(false);
  Forget();
  m_ui->StopOperation();
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + LAYOUT, "epg=" + m_app));
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 1u);
  EXPECT_EQ(Key(), "{\"CustomApp\":{}}\n");
}

// The app has quit.

TEST_F(CustomUIExtendedTest, QuitPutsTheReplacementInPlaceAgainWhateverTheOptionSays) {
  WriteReplacementFile();
  fake::SetWaits(fake::Waits::TimeOut);
  Make("epg", "default");
  m_ui->RunOperation(false);
  Forget();
  Tell(6, m_ui.get());
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + LAYOUT, "epg=" + m_app));
  EXPECT_EQ(fake::Launches().size(), 1u);
  EXPECT_EQ(fake::LogTexts().front(), "[Info] rMetadataValue : epg");
}

TEST_F(CustomUIExtendedTest, QuitComesFromTheSettingsKeyAndBlocksItForTheWholeTime) {
  WriteReplacementFile();
  Make("epg", "default");
  m_ui->RunOperation(false);
  Forget();
  fake::SetKey(STATUS_KEY, "quit");
  Begin([] { fake::DeliverKeyChanges(); });
  // The next status is queued behind the blocked callback, so it cannot end the wait.
  fake::SetKey(STATUS_KEY, "resume");
  EXPECT_EQ(fake::WaitingThreads(), 1u);
  EXPECT_EQ(fake::AdvanceWaits(20000), 1u);
  End();
  EXPECT_THAT(OperationChanges(), ElementsAre("epg=" + LAYOUT, "epg=" + m_app));
}

TEST_F(CustomUIExtendedTest, QuitWakesAWaiterBeforeItRearms) {
  WriteReplacementFile();
  Make("epg", BACKGROUND);
  Begin([this] { m_ui->RunOperation(true); });
  fake::SetWaits(fake::Waits::TimeOut);  // for the worker that quit starts
  Tell(6, m_ui.get());
  End();
  // Two changes to the replacement and two to the app; operations already set are skipped.
  EXPECT_EQ(fake::CallCount("app_operation_get_current_app"), 4u);
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_EPG), m_app);
}

TEST_F(CustomUIExtendedTest, QuitOfAnAppThatWasRemovedSinceRearmsNothing) {
  WriteReplacementFile();
  fake::SetWaits(fake::Waits::TimeOut);
  Make("epg", BACKGROUND);
  m_ui->RunOperation(false);
  m_ui->StopOperation();  // keeps the callback
  m_ui.reset();
  Forget();
  fake::SetKey(STATUS_KEY, "quit");
  EXPECT_EQ(fake::DeliverKeyChanges(), 1u);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Debug] sAppStatus = quit"));
  EXPECT_THAT(fake::CallNames(), ElementsAre("vconf_keynode_get_str"));
}

// The update.

TEST_F(CustomUIExtendedTest, AnUpdateWithNothingStagedEndsAtOnce) {
  Make("epg", "invisible");
  m_ui->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] Applied Metadata : epg, Updatable Metadata : "));
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(CustomUIExtendedTest, AnUpdateOfEqualTextsAndOptionsClearsNothing) {
  Make("epg", "");
  layers::StageValue(*m_ui, "epg");
  m_ui->UpdateOperation();
  m_ui->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] Applied Metadata : epg, Updatable Metadata : epg",
                          "[Debug] Applied Metadata : epg, Updatable Metadata : epg"));
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(CustomUIExtendedTest, AnUnknownScreenMoreIsAChangeOfTheText) {
  Make("epg", "");
  m_ui->RunOperation(false);
  const std::string sBefore = Key();
  Forget();
  layers::StageValue(*m_ui, "epg,x");
  m_ui->UpdateOperation();
  EXPECT_THAT(OperationChanges(), ElementsAre("epg reset", "epg=" + m_app));
  EXPECT_EQ(m_ui->GetMetadata("orv_type", "custom_ui_extended"), "epg,x");
  EXPECT_EQ(Key(), sBefore);
  EXPECT_EQ(fake::CallCount("vconf_set_str"), 0u);
}

TEST_F(CustomUIExtendedTest, AnUpdateHandsTheOldScreensBackAndTakesTheNewOnes) {
  Make("epg", "");
  m_ui->RunOperation(false);
  Forget();
  layers::StageValue(*m_ui, "channel_list");
  m_ui->UpdateOperation();
  EXPECT_THAT(OperationChanges(), ElementsAre("epg reset", "channel-list=" + m_app));
  EXPECT_THAT(fake::CallTexts({"vconf_ignore_key_changed", "vconf_notify_key_changed"}),
              testing::SizeIs(2));
  Forget();
  m_ui->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] Applied Metadata : channel_list, Updatable Metadata : "));
}

TEST_F(CustomUIExtendedTest, TheFirstUpdateWipesAnOptionThatIsSetAndTheKeyKeepsIt) {
  Make("epg", "invisible");
  m_ui->RunOperation(false);
  layers::Stage(*m_ui, OPTION, "background_img");  // dropped: the key does not exist yet
  layers::StageValue(*m_ui, "epg");
  Forget();
  m_ui->UpdateOperation();
  EXPECT_THAT(OperationChanges(), ElementsAre("epg reset", "epg=" + m_app));
  EXPECT_EQ(m_ui->GetMetadata("orv_data", OPTION), "");
  EXPECT_EQ(Key(), "{" + App("invisible") + "}\n");
}

TEST_F(CustomUIExtendedTest, AnOptionStagedAloneHandsBackDirectlyAndTakesOverByTheWorker) {
  WriteReplacementFile();
  fake::SetWaits(fake::Waits::TimeOut);
  Make("epg", "");
  m_ui->RunOperation(false);
  layers::StageValue(*m_ui, "epg");
  m_ui->UpdateOperation();  // not a change, but the option can be staged now
  layers::Stage(*m_ui, OPTION, BACKGROUND);
  Forget();
  m_ui->UpdateOperation();
  EXPECT_THAT(OperationChanges(), ElementsAre("epg reset", "epg=" + LAYOUT, "epg=" + m_app));
  EXPECT_EQ(m_ui->GetMetadata("orv_data", OPTION), BACKGROUND);
  EXPECT_EQ(Key(), "{" + App("default") + "}\n");
  // The staged option is kept, so staging the same text again is not a change.
  layers::StageValue(*m_ui, "epg");
  Forget();
  m_ui->UpdateOperation();
  EXPECT_THAT(OperationChanges(), IsEmpty());
}

}  // namespace
