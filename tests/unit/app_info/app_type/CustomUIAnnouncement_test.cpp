// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/CustomUIAnnouncement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "fake/control/calls.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"

namespace {

using testing::ElementsAre;

const std::string KEY = "db/orv_channel/custom_ui_type";

TEST(CustomUIAnnouncement, TheOptionIsDefaultWhenMissingOrEmpty) {
  const std::string option = "custom_ui_cold_boot_opt";
  EXPECT_EQ(CustomUIAnnouncement::MakeAppInfo("p", "a", "w", {})["cold_boot_opt"], "default");
  EXPECT_EQ(CustomUIAnnouncement::MakeAppInfo("p", "a", "w", {{option, ""}})["cold_boot_opt"],
            "default");
  EXPECT_EQ(CustomUIAnnouncement::MakeAppInfo("p", "a", "w", {{option, "x"}})["cold_boot_opt"],
            "x");
}

TEST(CustomUIAnnouncement, AnAnnouncementHasFourMembers) {
  const Json::Value info = CustomUIAnnouncement::MakeAppInfo("p", "a", "w", {});
  EXPECT_THAT(info.getMemberNames(), ElementsAre("app_id", "cold_boot_opt", "pkg_id", "widget_id"));
  EXPECT_EQ(info["pkg_id"], "p");
  EXPECT_EQ(info["app_id"], "a");
  EXPECT_EQ(info["widget_id"], "w");
}

TEST(CustomUIAnnouncement, TheKeyIsReadAndWrittenOnceUnderTheNameOfTheOperation) {
  fake::StoreKey(KEY, std::string("{\"B\":1}"));
  EXPECT_TRUE(CustomUIAnnouncement::WriteAppInfoVconfKey("A", Json::Value("x"), false));
  EXPECT_EQ(fake::StringKey(KEY), "{\"A\":\"x\",\"B\":1}\n");
  EXPECT_THAT(fake::CallNames(), ElementsAre("vconf_get_str", "vconf_set_str"));
  ASSERT_EQ(fake::Logs().size(), 1u);
  EXPECT_THAT(fake::Logs()[0].text, testing::HasSubstr(": WriteAppInfoVconfKey("));
}

TEST(CustomUIAnnouncement, AMemberIsEmptiedOrComesOutAsNull) {
  fake::StoreKey(KEY, std::string("{\"A\":{\"a\":1}}"));
  EXPECT_TRUE(CustomUIAnnouncement::WriteAppInfoVconfKey("A", Json::Value(), true));
  EXPECT_EQ(fake::StringKey(KEY), "{\"A\":{}}\n");
  EXPECT_TRUE(CustomUIAnnouncement::WriteAppInfoVconfKey("B", Json::Value(), true));
  EXPECT_EQ(fake::StringKey(KEY), "{\"A\":{},\"B\":null}\n");
}

TEST(CustomUIAnnouncement, JsonThatIsNestedTooDeeplyRaisesAndStays) {
  const std::string deep(5000, '[');
  fake::StoreKey(KEY, deep);
  EXPECT_FALSE(CustomUIAnnouncement::WriteAppInfoVconfKey("A", Json::Value(), true));
  EXPECT_EQ(fake::StringKey(KEY), deep);
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), ElementsAre("[ERROR] Exception Caught"));
}

TEST(CustomUIAnnouncement, WithoutTheKeyAnExceptionIsThrown) {
  EXPECT_THROW(CustomUIAnnouncement::WriteAppInfoVconfKey("A", Json::Value(), false),
               std::logic_error);
}

}  // namespace
