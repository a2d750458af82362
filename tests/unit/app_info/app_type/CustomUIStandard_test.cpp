// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/CustomUIStandard.h"

#include <app_control.h>
#include <dlog.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "fake/control/apps.h"
#include "fake/control/calls.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"
#include "layers.h"
#include "support/log_matchers.h"

namespace {

using support::HasLog;
using support::HasLogsInOrder;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using Banners = std::vector<CustomUIStandard::BannerType>;

const std::string KEY = "db/orv_channel/custom_ui_type";
const std::string OPTION = "custom_ui_cold_boot_opt";

class CustomUIStandardTest : public testing::Test {
 protected:
  CustomUIStandardTest() { fake::StoreKey(KEY, std::string()); }

  void Forget() {
    fake::ClearLog();
    fake::ClearCalls();
    fake::ClearLaunches();
  }
  void Make(const std::string& rValue, const std::string& rOption = "") {
    m_ui = layers::Decorate<CustomUIStandard>(rValue);
    layers::Apply(*m_ui, OPTION, rOption);
    Forget();
  }
  static std::string Banner(const std::string& rBanners, const std::string& rOption = "default") {
    return "\"CustomBanner\":{\"app_id\":\"AbCdEfGhIj.app\",\"banner_types\":\"" + rBanners +
           "\",\"cold_boot_opt\":\"" + rOption +
           "\",\"pkg_id\":\"org.example.pkg\",\"widget_id\":\"AbCdEfGhIj.widget\"}";
  }
  std::string Key() { return fake::StringKey(KEY).value_or("no such key"); }
  Banners Enabled(const std::string& rText) {
    Banners types;
    CustomUIStandard::GetEnabledBannerTypes(rText, types);
    return types;
  }

  layers::Chain<CustomUIStandard> m_ui;
};

TEST_F(CustomUIStandardTest, TheFactoryLogsTheValueAndEntersTheOption) {
  m_ui = layers::Decorate<CustomUIStandard>("info");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rMetadataValue : info"));
  MetadataMap metadata;
  m_ui->GetAllMetadata(metadata);
  EXPECT_EQ(metadata, (MetadataMap{{"orv_type", {{"custom_ui_standard", "info"}}},
                                   {"orv_data", {{"custom_ui_cold_boot_opt", ""}}}}));
}

TEST_F(CustomUIStandardTest, TheReleaseOfNullDoesNothing) {
  CustomUIStandard::Release(nullptr);
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(CustomUIStandardTest, BannersAreCutAtCommasAndKeepTheirOrderAndRepeats) {
  EXPECT_EQ(Enabled("info"), (Banners{CustomUIStandard::BANNER_TYPE_INFO}));
  EXPECT_EQ(Enabled("channel,info,channel"),
            (Banners{CustomUIStandard::BANNER_TYPE_CHANNEL, CustomUIStandard::BANNER_TYPE_INFO,
                     CustomUIStandard::BANNER_TYPE_CHANNEL}));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rMetadataValue : info",
                                            "[Info] rMetadataValue : channel,info,channel"));
}

TEST_F(CustomUIStandardTest, UnknownBannersAreSkippedWithoutAWord) {
  EXPECT_THAT(Enabled("Info, channel,epg"), IsEmpty());
  EXPECT_THAT(Enabled(""), IsEmpty());
  EXPECT_THAT(Enabled(",,"), IsEmpty());
  EXPECT_EQ(Enabled(",x,info,"), (Banners{CustomUIStandard::BANNER_TYPE_INFO}));
  EXPECT_EQ(fake::LogTexts().size(), 4u);
}

TEST_F(CustomUIStandardTest, BannersAreAppendedToWhatIsThere) {
  Banners types{CustomUIStandard::BANNER_TYPE_INFO};
  CustomUIStandard::GetEnabledBannerTypes("channel", types);
  EXPECT_EQ(types,
            (Banners{CustomUIStandard::BANNER_TYPE_INFO, CustomUIStandard::BANNER_TYPE_CHANNEL}));
}

TEST_F(CustomUIStandardTest, TheNumbersOfTheBannersAreFixed) {
  EXPECT_EQ(CustomUIStandard::BANNER_TYPE_INFO, 0);
  EXPECT_EQ(CustomUIStandard::BANNER_TYPE_CHANNEL, 1);
}

TEST_F(CustomUIStandardTest, ARunOverAnEmptyKeyWritesTheFiveMembers) {
  Make("info,channel");
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "{" + Banner("info,channel") + "}\n");
}

TEST_F(CustomUIStandardTest, ARunAnnouncesFirstAndPreloadsThen) {
  Make("info");
  m_ui->RunOperation(false);
  EXPECT_THAT(fake::CallTexts({"vconf_get_str", "vconf_set_str", "app_control_send_launch_request",
                               "vconf_notify_key_changed"}),
              testing::SizeIs(4));
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts(
                  {"[Debug] str = ", "[Debug] sVconfKey = rtc/memory/WebApp/AbCdEfGhIj.app"})));
  ASSERT_EQ(fake::Launches().size(), 1u);
  EXPECT_EQ(fake::Launches()[0].app, layers::APP);
  EXPECT_EQ(fake::Launches()[0].extra.size(), 1u);
}

TEST_F(CustomUIStandardTest, TheLayerWantsToHearNothingBack) {
  Make("info");
  m_ui->RunOperation(false);
  char aText[256];
  std::snprintf(aText, sizeof(aText),
                "[Info] rAppID : %s, rAppType : custom_ui_standard, pCallbackFuncPtr : %p, "
                "pUserData : %p",
                layers::APP, static_cast<void*>(nullptr), static_cast<void*>(nullptr));
  EXPECT_THAT(fake::LogTexts(), HasLog(aText));
}

TEST_F(CustomUIStandardTest, TheOptionIsPassedOnAsItIs) {
  Make("info", "invisible");
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "{" + Banner("info", "invisible") + "}\n");
}

TEST_F(CustomUIStandardTest, UnknownBannersStillGoOutAsRawText) {
  Make("x, y");
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "{" + Banner("x, y") + "}\n");
}

TEST_F(CustomUIStandardTest, AnotherMemberOfTheKeyStaysUntouched) {
  const std::string sCustomApp = "\"CustomApp\":{\"app_id\":\"other\",\"z\":[1,true,null]}";
  fake::StoreKey(KEY, "// a comment\n{ " + sCustomApp + ", \"CustomBanner\": 7 }");
  Make("info");
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "{" + sCustomApp + "," + Banner("info") + "}\n");
  m_ui->StopOperation();
  EXPECT_EQ(Key(), "{" + sCustomApp + ",\"CustomBanner\":{}}\n");
}

TEST_F(CustomUIStandardTest, ARunOfAKnownAppLeavesTheKeyAndPreloads) {
  Make("info");
  fake::StoreKey(KEY, std::string("left from the earlier run"));
  m_ui->RunOperation(true);
  EXPECT_EQ(Key(), "left from the earlier run");
  EXPECT_EQ(fake::CallCount("vconf_get_str"), 0u);
  EXPECT_EQ(fake::Launches().size(), 1u);
}

TEST_F(CustomUIStandardTest, AKeyWithBrokenJsonStaysAndTheAppIsNotPreloaded) {
  fake::StoreKey(KEY, std::string("{broken"));
  Make("info");
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "{broken");
  EXPECT_EQ(fake::CallCount("vconf_set_str"), 0u);
  EXPECT_THAT(fake::Launches(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] str = {broken", "[Debug] Invalid Json Str : {broken",
                          "[Debug] WriteAppInfoVconfKey() return false."));
  m_ui->StopOperation();
  EXPECT_EQ(Key(), "{broken");
}

TEST_F(CustomUIStandardTest, AKeyOfAnotherKindOfJsonRaisesAndStays) {
  fake::StoreKey(KEY, std::string("[1]"));
  Make("info");
  EXPECT_FALSE(m_ui->WriteAppInfoVconfKey(false));
  EXPECT_EQ(Key(), "[1]");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Debug] str = [1]", "[ERROR] Exception Caught"));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), ElementsAre("[ERROR] Exception Caught"));
}

TEST_F(CustomUIStandardTest, AMemberThatCannotBeEmptiedRaisesAndStays) {
  fake::StoreKey(KEY, std::string("{\"CustomBanner\":\"text\"}"));
  Make("info");
  EXPECT_FALSE(m_ui->WriteAppInfoVconfKey(true));
  EXPECT_EQ(Key(), "{\"CustomBanner\":\"text\"}");
}

TEST_F(CustomUIStandardTest, WithoutTheKeyAnExceptionLeavesTheRun) {
  fake::UnsetKey(KEY);
  Make("info");
  try {
    m_ui->RunOperation(false);
    FAIL() << "nothing was thrown";
  } catch (const std::logic_error& e) {
    EXPECT_STREQ(e.what(), "basic_string: construction from null is not valid");
  }
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Debug] str = (null)"));
  EXPECT_THAT(fake::Launches(), IsEmpty());
  EXPECT_THROW(m_ui->StopOperation(), std::logic_error);
}

TEST_F(CustomUIStandardTest, ASettingThatIsRefusedCountsAsWritten) {
  Make("info");
  fake::Fail("vconf_set_str", -1);
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "");
  EXPECT_EQ(fake::Launches().size(), 1u);
}

TEST_F(CustomUIStandardTest, APreloadThatFailsIsNotActedOn) {
  Make("info");
  fake::QueueLaunchResults({APP_CONTROL_ERROR_APP_NOT_FOUND});
  m_ui->RunOperation(false);
  EXPECT_EQ(Key(), "{" + Banner("info") + "}\n");
  EXPECT_EQ(fake::Launches().size(), 1u);
}

TEST_F(CustomUIStandardTest, AnUpdateWithNothingStagedEndsAtOnceWhateverTheOptionSays) {
  Make("info", "invisible");
  m_ui->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] Applied Metadata : info, Updatable Metadata : "));
  EXPECT_EQ(m_ui->GetMetadata("orv_data", OPTION), "invisible");
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(CustomUIStandardTest, AnUpdateToAnotherListRewritesTheKeyAndPreloadsAgain) {
  Make("info");
  m_ui->RunOperation(false);
  Forget();
  layers::StageValue(*m_ui, "channel");
  m_ui->UpdateOperation();
  EXPECT_EQ(fake::LogTexts().front(),
            "[Debug] Applied Metadata : info, Updatable Metadata : channel");
  EXPECT_EQ(Key(), "{" + Banner("channel") + "}\n");
  EXPECT_EQ(m_ui->GetMetadata("orv_type", "custom_ui_standard"), "channel");
  EXPECT_EQ(fake::Launches().size(), 1u);
  Forget();
  m_ui->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] Applied Metadata : channel, Updatable Metadata : "));
}

TEST_F(CustomUIStandardTest, AnUpdateWhosePreloadFailsClearsTheStagedValueAllTheSame) {
  Make("info");
  fake::QueueLaunchResults({APP_CONTROL_ERROR_APP_NOT_FOUND});
  layers::StageValue(*m_ui, "channel");
  m_ui->UpdateOperation();
  EXPECT_EQ(Key(), "{" + Banner("channel") + "}\n");
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), HasLog("[ERROR] Cannot find target app."));
  Forget();
  m_ui->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] Applied Metadata : channel, Updatable Metadata : "));
}

TEST_F(CustomUIStandardTest, AnotherOrderOfTheBannersIsAChange) {
  Make("info,channel");
  layers::StageValue(*m_ui, "channel,info");
  m_ui->UpdateOperation();
  EXPECT_EQ(Key(), "{" + Banner("channel,info") + "}\n");
}

TEST_F(CustomUIStandardTest, ARepeatedBannerIsAChange) {
  Make("info");
  layers::StageValue(*m_ui, "info,info");
  m_ui->UpdateOperation();
  EXPECT_EQ(Key(), "{" + Banner("info,info") + "}\n");
}

TEST_F(CustomUIStandardTest, AnUnknownBannerMoreIsNoChangeAndStaysStaged) {
  Make("info");
  layers::StageValue(*m_ui, "info,x");
  m_ui->UpdateOperation();
  EXPECT_EQ(Key(), "");
  EXPECT_THAT(fake::CallNames(), IsEmpty());
  EXPECT_EQ(m_ui->GetMetadata("orv_type", "custom_ui_standard"), "info");
  Forget();
  m_ui->UpdateOperation();
  EXPECT_EQ(fake::LogTexts().front(),
            "[Debug] Applied Metadata : info, Updatable Metadata : info,x");
}

TEST_F(CustomUIStandardTest, TheFirstUpdateWipesAnOptionThatIsSet) {
  Make("info", "invisible");
  layers::Stage(*m_ui, OPTION, "background_img");  // dropped: the key does not exist yet
  layers::StageValue(*m_ui, "info");
  m_ui->UpdateOperation();
  EXPECT_EQ(Key(), "{" + Banner("info", "default") + "}\n");
  EXPECT_EQ(m_ui->GetMetadata("orv_data", OPTION), "");
}

TEST_F(CustomUIStandardTest, AChangeOfTheListWipesTheOptionToo) {
  Make("info", "invisible");
  layers::StageValue(*m_ui, "channel");
  m_ui->UpdateOperation();
  EXPECT_EQ(Key(), "{" + Banner("channel", "default") + "}\n");
}

TEST_F(CustomUIStandardTest, AfterTheFirstUpdateTheOptionCanBeStaged) {
  Make("info");
  layers::StageValue(*m_ui, "info");
  m_ui->UpdateOperation();  // not a change, but the key exists now
  EXPECT_EQ(Key(), "");
  layers::Stage(*m_ui, OPTION, "invisible");
  m_ui->UpdateOperation();
  EXPECT_EQ(Key(), "{" + Banner("info", "invisible") + "}\n");
  EXPECT_EQ(m_ui->GetMetadata("orv_data", OPTION), "invisible");
  // The staged option was cleared, so staging the same value again clears the option.
  layers::StageValue(*m_ui, "info");
  m_ui->UpdateOperation();
  EXPECT_EQ(Key(), "{" + Banner("info", "default") + "}\n");
}

TEST_F(CustomUIStandardTest, AnUpdateThatCannotWriteKeepsTheStagedValueAndAppliesIt) {
  Make("info");
  fake::StoreKey(KEY, std::string("{broken"));
  layers::StageValue(*m_ui, "channel");
  m_ui->UpdateOperation();
  EXPECT_EQ(fake::LogTexts().back(), "[Debug] WriteAppInfoVconfKey() return false.");
  EXPECT_THAT(fake::Launches(), IsEmpty());
  EXPECT_EQ(m_ui->GetMetadata("orv_type", "custom_ui_standard"), "channel");
  Forget();
  m_ui->UpdateOperation();
  EXPECT_EQ(fake::LogTexts().front(),
            "[Debug] Applied Metadata : channel, Updatable Metadata : channel");
}

TEST_F(CustomUIStandardTest, AStopOverAnEmptyKeyLeavesANullMember) {
  Make("info");
  m_ui->StopOperation();
  EXPECT_EQ(Key(), "{\"CustomBanner\":null}\n");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] In", "[Debug] str = "));
}

TEST_F(CustomUIStandardTest, AStopEmptiesTheAnnouncementAndEndsNoPreloading) {
  Make("info");
  m_ui->RunOperation(false);
  Forget();
  m_ui->StopOperation();
  EXPECT_EQ(Key(), "{\"CustomBanner\":{}}\n");
  EXPECT_EQ(fake::CallCount("vconf_ignore_key_changed"), 0u);
  EXPECT_EQ(fake::KeySubscriptions("rtc/memory/WebApp/AbCdEfGhIj.app"), 1u);
}

TEST_F(CustomUIStandardTest, TheReleaseLeavesTheKeyAsItIs) {
  Make("info");
  m_ui->RunOperation(false);
  const std::string sBefore = Key();
  Forget();
  m_ui.reset();
  EXPECT_EQ(Key(), sBefore);
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

}  // namespace
