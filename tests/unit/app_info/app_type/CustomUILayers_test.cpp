// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// The two custom-UI layers around one record, and their behaviour with unusual metadata.
#include <app_control.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <stdexcept>

#include "app_info/app_type/CustomUIExtended.h"
#include "app_info/app_type/CustomUIStandard.h"
#include "fake/control/apps.h"
#include "fake/control/calls.h"
#include "fake/control/clock.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"
#include "layers.h"
#include "support/files.h"
#include "support/log_matchers.h"

namespace {

using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

const std::string KEY = "db/orv_channel/custom_ui_type";
const std::string STATUS_KEY = std::string("rtc/memory/WebApp/") + layers::APP;
const std::string OPTION = "custom_ui_cold_boot_opt";
const std::string LAYOUT = "org.example.layout";
const std::string FILE_NAME = "/opt/share/orv_ch/replacement_ui_info.json";

class CustomUILayersTest : public testing::Test {
 protected:
  CustomUILayersTest() {
    fake::StoreKey(KEY, std::string());
    support::WriteFile(FILE_NAME, "{\"appid\":\"" + LAYOUT + "\"}");
    fake::SetWaits(fake::Waits::TimeOut);
  }
  ~CustomUILayersTest() override { boost::filesystem::remove_all("/opt/share/orv_ch"); }

  static void Forget() {
    fake::ClearLog();
    fake::ClearCalls();
    fake::ClearLaunches();
  }
  /// As the creator builds it: "custom_ui_extended" comes before "custom_ui_standard".
  void MakeBoth() {
    AppInfo* inner = CustomUIExtended::DecorateAppType(layers::NewRecord(), "epg");
    m_both = layers::Decorate<CustomUIStandard>(inner, "info");
    Forget();
  }
  static std::vector<std::string> OperationChanges() {
    std::vector<std::string> changes;
    for (const fake::Call& call : fake::Calls()) {
      if (call.name == "app_operation_set_current_app") {
        changes.push_back(call.args[1]);
      }
      if (call.name == "app_operation_reset_current_app") {
        changes.push_back("reset");
      }
    }
    return changes;
  }
  std::string Key() { return fake::StringKey(KEY).value_or("no such key"); }

  const std::string m_app = layers::APP;
  layers::Chain<CustomUIStandard> m_both;
};

TEST_F(CustomUILayersTest, BothAnnounceThemselvesInTheOneKey) {
  MakeBoth();
  m_both->RunOperation(false);
  EXPECT_EQ(Key(),
            "{\"CustomApp\":{\"app_id\":\"AbCdEfGhIj.app\",\"cold_boot_opt\":\"default\","
            "\"pkg_id\":\"org.example.pkg\",\"widget_id\":\"AbCdEfGhIj.widget\"},"
            "\"CustomBanner\":{\"app_id\":\"AbCdEfGhIj.app\",\"banner_types\":\"info\","
            "\"cold_boot_opt\":\"default\",\"pkg_id\":\"org.example.pkg\","
            "\"widget_id\":\"AbCdEfGhIj.widget\"}}\n");
  m_both->StopOperation();
  EXPECT_EQ(Key(), "{\"CustomApp\":{},\"CustomBanner\":{}}\n");
}

TEST_F(CustomUILayersTest, TheInnerOneRunsAndStopsFirst) {
  MakeBoth();
  m_both->RunOperation(false);
  std::vector<std::string> types;
  for (const std::string& text : fake::LogTexts()) {
    const std::size_t begin = text.find("rAppType : ");
    if (begin != std::string::npos) {
      types.push_back(text.substr(begin + 11, 18));
    }
  }
  EXPECT_THAT(types, ElementsAre("custom_ui_extended", "custom_ui_standard"));
  Forget();
  m_both->StopOperation();
  const std::vector<fake::Call> writes = fake::Calls("vconf_set_str");
  ASSERT_EQ(writes.size(), 2u);
  EXPECT_THAT(writes[0].args[1], testing::HasSubstr("\"CustomApp\":{},"));
  EXPECT_THAT(writes[1].args[1], testing::HasSubstr("\"CustomBanner\":{}}"));
}

TEST_F(CustomUILayersTest, TheyShareOneSubscriptionWhichTheOuterOneKeeps) {
  MakeBoth();
  m_both->RunOperation(false);
  EXPECT_EQ(fake::CallCount("vconf_notify_key_changed"), 1u);
  EXPECT_EQ(fake::Launches().size(), 2u);  // the app's state is not known yet
  m_both->StopOperation();
  EXPECT_EQ(fake::CallCount("vconf_ignore_key_changed"), 0u);
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 1u);
}

TEST_F(CustomUILayersTest, AnAppThatIsUpIsLaunchedByNeither) {
  MakeBoth();
  m_both->RunOperation(false);
  fake::SetKey(STATUS_KEY, "resume");
  fake::DeliverKeyChanges();
  Forget();
  m_both->RunOperation(true);
  EXPECT_THAT(fake::Launches(), IsEmpty());
}

TEST_F(CustomUILayersTest, BrokenJsonKeepsEachFromItsOwnWorkOnly) {
  MakeBoth();
  fake::StoreKey(KEY, std::string("{broken"));
  m_both->RunOperation(false);
  EXPECT_THAT(fake::LogTexts(),
              support::HasLogTimes("[Debug] WriteAppInfoVconfKey() return false.", 2));
  EXPECT_THAT(fake::Launches(), IsEmpty());
}

TEST_F(CustomUILayersTest, WithoutTheKeyTheOuterOneDoesNotComeToItsTurn) {
  MakeBoth();
  fake::UnsetKey(KEY);
  EXPECT_THROW(m_both->RunOperation(false), std::logic_error);
  EXPECT_EQ(fake::CallCount("vconf_get_str"), 1u);
}

TEST_F(CustomUILayersTest, AnUpdateWithoutTheKeyLeavesTheStagedValue) {
  const auto ui = layers::Decorate<CustomUIStandard>("info");
  layers::StageValue(*ui, "channel");
  fake::UnsetKey(KEY);
  EXPECT_THROW(ui->UpdateOperation(), std::logic_error);
  EXPECT_EQ(ui->GetMetadata("orv_type", "custom_ui_standard"), "channel");
  fake::StoreKey(KEY, std::string());
  Forget();
  ui->UpdateOperation();
  EXPECT_EQ(fake::LogTexts().front(),
            "[Debug] Applied Metadata : channel, Updatable Metadata : channel");
}

TEST_F(CustomUILayersTest, ScreensAreUpdatedWithoutTheKey) {
  const auto ui = layers::Decorate<CustomUIExtended>("epg");
  layers::StageValue(*ui, "channel_list");
  fake::UnsetKey(KEY);
  ui->UpdateOperation();
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_CHANNEL_LIST), m_app);
  EXPECT_EQ(fake::CallCount("vconf_get_str"), 0u);
}

TEST_F(CustomUILayersTest, AnOptionThatWasRemovedIsAnnouncedAsDefault) {
  const auto banner = layers::Decorate<CustomUIStandard>("info");
  layers::Apply(*banner, OPTION, "invisible");
  banner->RemoveMetadata(OPTION, OPTION);
  banner->RunOperation(false);
  EXPECT_THAT(Key(), testing::HasSubstr("\"cold_boot_opt\":\"default\""));
}

TEST_F(CustomUILayersTest, AnOptionThatWasRemovedTakesTheDirectPath) {
  const auto ui = layers::Decorate<CustomUIExtended>("epg");
  layers::Apply(*ui, OPTION, "background_img");
  ui->RemoveMetadata(OPTION, OPTION);
  ui->RunOperation(false);
  EXPECT_THAT(OperationChanges(), ElementsAre(m_app));
  EXPECT_THAT(Key(), testing::HasSubstr("\"cold_boot_opt\":\"default\""));
}

TEST_F(CustomUILayersTest, ScreensThatNobodyKnowsAreAnnouncedAndPreloadedAllTheSame) {
  const auto ui = layers::Decorate<CustomUIExtended>("home,EPG");
  ui->RunOperation(false);
  EXPECT_THAT(OperationChanges(), IsEmpty());
  EXPECT_THAT(Key(), testing::HasSubstr("\"CustomApp\":{\"app_id\""));
  EXPECT_EQ(fake::Launches().size(), 1u);
}

TEST_F(CustomUILayersTest, TheFirstUpdateOfABackgroundImageUsesTheReplacementAgain) {
  const auto ui = layers::Decorate<CustomUIExtended>("epg");
  layers::Apply(*ui, OPTION, "background_img");
  ui->RunOperation(false);
  layers::StageValue(*ui, "epg");
  Forget();
  ui->UpdateOperation();
  // Here the reset is a takeover; with the option cleared, the layer then takes over directly and
  // finds the app already set.
  EXPECT_THAT(OperationChanges(), ElementsAre(LAYOUT, m_app));
  EXPECT_EQ(ui->GetMetadata("orv_data", OPTION), "");
  Forget();
  ui->StopOperation();
  EXPECT_THAT(OperationChanges(), ElementsAre("reset"));
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 0u);
}

TEST_F(CustomUILayersTest, ANewBackgroundOptionHandsBackAtOnceAndTakesOverByTheWorker) {
  const auto ui = layers::Decorate<CustomUIExtended>("epg");
  const auto update = [&ui](const std::string& option) {
    layers::StageValue(*ui, "epg");
    layers::Stage(*ui, OPTION, option);
    Forget();
    ui->UpdateOperation();
  };
  layers::Apply(*ui, OPTION, "default");
  ui->RunOperation(false);
  update("default");  // is dropped and the option cleared: its key does not exist yet
  ASSERT_EQ(ui->GetMetadata("orv_data", OPTION), "");
  update("default");
  ASSERT_EQ(ui->GetMetadata("orv_data", OPTION), "default");
  update("background_img");
  EXPECT_THAT(OperationChanges(), ElementsAre("reset", LAYOUT, m_app));
  EXPECT_EQ(ui->GetMetadata("orv_data", OPTION), "background_img");
  EXPECT_THAT(fake::CallTexts({"vconf_ignore_key_changed", "vconf_notify_key_changed"}),
              testing::SizeIs(2));
  EXPECT_THAT(Key(), testing::HasSubstr("\"cold_boot_opt\":\"default\""));
}

TEST_F(CustomUILayersTest, AFailedOperationDoesNotStopTheReplacement) {
  const auto ui = layers::Decorate<CustomUIExtended>("channel_list,epg");
  layers::Apply(*ui, OPTION, "background_img");
  fake::Fail("app_operation_set_current_app", -5);
  ui->RunOperation(false);
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_CHANNEL_LIST), m_app);
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_EPG), m_app);
  EXPECT_THAT(fake::LogTexts(),
              HasLog("[ERROR] AppControlUtils::SetCurrentAppOfAppOperation() return false.(eType : "
                     "0, bEnable : 1)"));
}

TEST_F(CustomUILayersTest, AStopWithoutAReplacementFileLeavesOperationsAndKey) {
  const auto ui = layers::Decorate<CustomUIExtended>("epg");
  layers::Apply(*ui, OPTION, "background_img");
  ui->RunOperation(false);
  boost::filesystem::remove(FILE_NAME);
  Forget();
  ui->StopOperation();
  EXPECT_THAT(OperationChanges(), IsEmpty());
  EXPECT_EQ(fake::OperationApp(ORV_OPERATION_EPG), m_app);
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 1u);
  EXPECT_EQ(Key(), "{\"CustomApp\":{}}\n");
}

}  // namespace
