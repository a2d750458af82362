// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/AllRecords.h"

#include <chrono>
#include <future>

#include "controller/ORVAppCreator.h"
#include "unit/controller/installer_fixture.h"

namespace {

using support::HasLogsInOrder;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNull;
using testing::NotNull;
using testing::Pair;
using testing::SizeIs;

AppInfo* Cached(const std::string& package) {
  return AppInfoCache::GetInstance()->GetAppInfo(package);
}

class Validation : public InstallerTest {};

TEST_F(Validation, KeepsWhatIsThereAndRemovesWhatIsGoneOrUnknown) {
  RecordingApp gone("gone");
  RecordingApp kept("kept");
  RecordingApp unknown("unknown");
  fake::AddWasApp({"gone", "gone.ui", "w1", 2, 1});
  fake::AddWasApp({"kept", "kept.ui", "w2", 2, 0});
  Installer();
  EXPECT_TRUE(Handle(1003));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("gone.stop"));
  EXPECT_THAT(Cached("gone"), IsNull());
  EXPECT_THAT(Cached("kept"), NotNull());
  EXPECT_THAT(Cached("unknown"), IsNull());
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] pEvent : 1003", "[Debug] RUN_VALIDATION_TESTING",
                                    "[Info] packageID : gone", "[Info] Remove gone App.",
                                    "[Info] packageID : kept", "[Info] packageID : unknown",
                                    "[Info] Remove unknown App."})));
  EXPECT_THAT(fake::LogTexts(), testing::Not(support::HasLog("[Info] Remove kept App.")));
}

TEST_F(Validation, AFailureOfTheFirstListDoesNotStopTheSecond) {
  RecordingApp gone("gone");
  fake::AddWasApp({"gone", "gone.ui", "w1", 2, 1});
  Installer();
  fake::Fail("was_get_all_app_list");
  EXPECT_TRUE(Handle(1003));
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(Cached("gone"), IsNull());
  EXPECT_THAT(fake::LogTexts(),
              support::HasLogTimes("[Debug] WASUtils::GetAllWASAppList() return false.", 1));
}

TEST_F(Validation, AFailureOfTheSecondListRemovesNothing) {
  RecordingApp gone("gone");
  RecordingApp unknown("unknown");
  fake::AddWasApp({"gone", "gone.ui", "w1", 2, 1});
  Installer();
  fake::Fail("was_get_all_app_list", -1, 1, 1);
  EXPECT_TRUE(Handle(1003));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("gone.stop"));
  EXPECT_THAT(Cached("gone"), NotNull());
  EXPECT_THAT(Cached("unknown"), NotNull());
}

TEST_F(Validation, TwoFailuresAreTwoLinesAndNothingIsChecked) {
  RecordingApp gone("gone");
  fake::AddWasApp({"gone", "gone.ui", "w1", 2, 1});
  Installer();
  fake::Fail("was_get_all_app_list", -1, 2);
  EXPECT_TRUE(Handle(1003));
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] pEvent : 1003", "[Debug] RUN_VALIDATION_TESTING",
                          "[ERROR] was_get_all_app_list failed.",
                          "[Debug] WASUtils::GetAllWASAppList() return false.",
                          "[ERROR] was_get_all_app_list failed.",
                          "[Debug] WASUtils::GetAllWASAppList() return false."));
}

TEST_F(Validation, FirstAllAreStoppedAndThenAllAreRemoved) {
  RecordingApp a("a");
  RecordingApp b("b");
  bool bothCached = true;
  b.SetHook([&] { bothCached = Cached("a") != nullptr && Cached("b") != nullptr; });
  fake::AddWasApp({"b", "b.ui", "wb", 2, 1});
  fake::AddWasApp({"a", "a.ui", "wa", 2, 1});
  Installer();
  bothCached = false;
  EXPECT_TRUE(Handle(1003));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.stop", "b.stop"));
  EXPECT_TRUE(bothCached);
  EXPECT_THAT(Cached("a"), IsNull());
  EXPECT_THAT(Cached("b"), IsNull());
}

TEST_F(Validation, AnAppThatCannotStopKeepsNoOtherFromStopOrRemoval) {
  // Without its settings key the stop of custom banners ends in an exception.
  fake::Package package;
  package.id = "a-banner";
  fake::App ui;
  ui.id = "a-banner.ui";
  ui.metadata = {{std::string(ORV_METADATA_PREFIX) + "orv_type/custom_ui_standard", "info_banner"}};
  package.apps = {ui};
  fake::AddPackage(package);
  RecordingApp second("b-second");
  Installer();
  ASSERT_TRUE(ORVAppCreator::GetInstance()->CreateApp("a-banner"));
  fake::AddWasApp({"a-banner", "a-banner.ui", "wa", 2, 1});
  fake::AddWasApp({"b-second", "b-second.ui", "wb", 2, 1});
  fake::StoreKey("db/orv_channel/custom_ui_type", std::string());
  fake::Fail("vconf_get_str");
  fake::ClearLog();
  EXPECT_TRUE(Handle(1003));
  EXPECT_EQ(fake::FailureCount("vconf_get_str"), 1u);
  EXPECT_THAT(fake::LogTexts(6), ElementsAre(testing::StartsWith("[ERROR] exception : ")));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("b-second.stop"));
  EXPECT_THAT(Cached("a-banner"), IsNull());
  EXPECT_THAT(Cached("b-second"), IsNull());
}

TEST_F(Validation, EntriesOfAnotherKindDoNotCount) {
  RecordingApp app("p");
  fake::AddWasApp({"p", "p.ui", "w1", 3, 0});
  Installer();
  EXPECT_TRUE(Handle(1003));
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(Cached("p"), IsNull());
}

TEST_F(Validation, ComesFromTheTimerHalfAnHourAfterTheStart) {
  RecordingApp unknown("unknown");
  Installer();
  fake::AdvanceTimers(1800 * 1000);
  Drain();
  EXPECT_THAT(Cached("unknown"), IsNull());
}

class Activation : public InstallerTest {};

TEST_F(Activation, PreloadsTheCustomUserInterfacesInPackageOrder) {
  RecordingApp extended("b-extended", "w-b");
  extended.Put("orv_type", "custom_ui_extended", "x");
  RecordingApp standard("a-standard", "w-a");
  standard.Put("orv_type", "custom_ui_standard", "x");
  RecordingApp feeder("c-feeder", "w-c");
  feeder.Put("orv_type", "ch_feeder_standard", "x");
  Installer();
  EXPECT_TRUE(Handle(75));
  ASSERT_THAT(fake::Launches(), SizeIs(2));
  EXPECT_EQ(fake::Launches()[0].app, "a-standard.ui");
  EXPECT_EQ(fake::Launches()[1].app, "b-extended.ui");
  EXPECT_THAT(fake::Launches()[0].extra,
              ElementsAre(Pair(ORV_LAUNCH_MODE_KEY, "backgroundAtStartup")));
  EXPECT_THAT(
      fake::LogTexts(),
      HasLogsInOrder(Texts({"[Info] pEvent : 75", "[Info] SIGNAL_TVS_ACTIVATE event comming",
                            "[Debug] appid : a-standard.ui, widgetid : w-a",
                            "[Debug] appid : b-extended.ui, widgetid : w-b",
                            "[Debug] appid : c-feeder.ui, widgetid : w-c",
                            "[Info] PreloadWebApp appID : a-standard.ui, widgetID :w-a",
                            "[Info] PreloadWebApp appID : b-extended.ui, widgetID :w-b"})));
}

TEST_F(Activation, AFailedPreloadIsNotRepeatedAndTheNextGoesOn) {
  RecordingApp a("a");
  a.Put("orv_type", "custom_ui_standard", "x");
  RecordingApp b("b");
  b.Put("orv_type", "custom_ui_standard", "x");
  Installer();
  fake::QueueLaunchResults({static_cast<int>(0xFEF00023)});
  EXPECT_TRUE(Handle(75));
  ASSERT_THAT(fake::Launches(), SizeIs(2));
  EXPECT_EQ(fake::Launches()[1].app, "b.ui");
}

TEST_F(Activation, AnAppThatIsBothIsPreloadedOnce) {
  RecordingApp app("a");
  app.Put("orv_type", "custom_ui_standard", "x");
  app.Put("orv_type", "custom_ui_extended", "x");
  Installer();
  EXPECT_TRUE(Handle(75));
  EXPECT_THAT(fake::Launches(), SizeIs(1));
}

TEST_F(Activation, ATypeWithoutAValueDoesNotCount) {
  RecordingApp app("a");
  app.Put("orv_type", "custom_ui_standard", "");
  app.Put("orv_type", "custom_ui_extended", "");
  Installer();
  EXPECT_TRUE(Handle(75));
  EXPECT_THAT(fake::Launches(), IsEmpty());
}

TEST_F(Activation, TheAppListIsNotLockedDuringThePreloads) {
  RecordingApp app("a");
  app.Put("orv_type", "custom_ui_standard", "x");
  Installer();
  bool free = false;
  std::future<AppInfo*> look;
  fake::SetLaunchHook([&](const fake::Launch&) {
    look = std::async(std::launch::async, [] { return Cached("a"); });
    free = look.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    return 0;
  });
  EXPECT_TRUE(Handle(75));
  EXPECT_TRUE(free);
}

class VirtualServices : public InstallerTest {};

TEST_F(VirtualServices, CustomFeedersRunFirstAndOnceMoreAmongAll) {
  RecordingApp a("a");
  RecordingApp b("b");
  b.Put("orv_type", "ch_feeder_custom", "extended");
  RecordingApp c("c");
  Installer();
  EXPECT_TRUE(Handle(90014));
  EXPECT_THAT(RecordingApp::Operations(),
              ElementsAre("b.run(true)", "a.run(true)", "b.run(true)", "c.run(true)"));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] pEvent : 90014",
                          "[Info] VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE event comming"));
}

TEST_F(VirtualServices, ACustomFeederWithoutAValueRunsOnceLikeTheOthers) {
  RecordingApp a("a");
  RecordingApp b("b");
  b.Put("orv_type", "ch_feeder_custom", "");
  Installer();
  EXPECT_TRUE(Handle(90014));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(true)", "b.run(true)"));
}

TEST_F(VirtualServices, MayComeAgain) {
  RecordingApp a("a");
  Installer();
  Handle(90014);
  Handle(90014);
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(true)", "a.run(true)"));
}

class EmptyCache : public InstallerTest {};

TEST_F(EmptyCache, EndsAllThreeEventsWithoutACallForAnApp) {
  Installer();
  EXPECT_TRUE(Handle(1003));
  EXPECT_TRUE(Handle(75));
  EXPECT_TRUE(Handle(90014));
  EXPECT_THAT(fake::CallNames(), ElementsAre("was_get_all_app_list", "was_get_all_app_list"));
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Info] pEvent : 1003", "[Debug] RUN_VALIDATION_TESTING", "[Info] pEvent : 75",
                  "[Info] SIGNAL_TVS_ACTIVATE event comming", "[Info] pEvent : 90014",
                  "[Info] VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE event comming"));
}

}  // namespace
