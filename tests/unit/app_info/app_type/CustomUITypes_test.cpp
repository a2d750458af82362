// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/CustomUITypes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "fake/control/calls.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string kKey = "db/orv_channel/custom_ui_type";

std::vector<int> Known(const std::string& text) {
  const std::map<std::string, int> names = {{"one", 1}, {"two", 2}};
  std::vector<int> found;
  CustomUITypes::AppendKnownNames(text, names, found);
  return found;
}

TEST(CustomUITypes, NamesAreCutAtCommasAndComparedAsTheyStand) {
  EXPECT_THAT(Known("two,one,two"), ElementsAre(2, 1, 2));
  EXPECT_THAT(Known("one, two,ONE,"), ElementsAre(1));
  EXPECT_THAT(Known(",,two"), ElementsAre(2));
  EXPECT_THAT(Known(""), IsEmpty());
}

TEST(CustomUITypes, TheOptionIsDefaultWhenMissingOrEmpty) {
  const std::string option = "custom_ui_cold_boot_opt";
  EXPECT_EQ(CustomUITypes::MakeAppInfo("p", "a", "w", {})["cold_boot_opt"], "default");
  EXPECT_EQ(CustomUITypes::MakeAppInfo("p", "a", "w", {{option, ""}})["cold_boot_opt"], "default");
  EXPECT_EQ(CustomUITypes::MakeAppInfo("p", "a", "w", {{option, "x"}})["cold_boot_opt"], "x");
}

TEST(CustomUITypes, AnAnnouncementHasFourMembers) {
  const Json::Value info = CustomUITypes::MakeAppInfo("p", "a", "w", {});
  EXPECT_THAT(info.getMemberNames(), ElementsAre("app_id", "cold_boot_opt", "pkg_id", "widget_id"));
  EXPECT_EQ(info["pkg_id"], "p");
  EXPECT_EQ(info["app_id"], "a");
  EXPECT_EQ(info["widget_id"], "w");
}

TEST(CustomUITypes, TheKeyIsReadAndWrittenOnceUnderTheNameOfTheOperation) {
  fake::StoreKey(kKey, std::string("{\"B\":1}"));
  EXPECT_TRUE(CustomUITypes::WriteAppInfoVconfKey("A", Json::Value("x"), false));
  EXPECT_EQ(fake::StringKey(kKey), "{\"A\":\"x\",\"B\":1}\n");
  EXPECT_THAT(fake::CallNames(), ElementsAre("vconf_get_str", "vconf_set_str"));
  ASSERT_EQ(fake::Logs().size(), 1u);
  EXPECT_THAT(fake::Logs()[0].text, testing::HasSubstr(": WriteAppInfoVconfKey("));
}

TEST(CustomUITypes, AMemberIsEmptiedOrComesOutAsNull) {
  fake::StoreKey(kKey, std::string("{\"A\":{\"a\":1}}"));
  EXPECT_TRUE(CustomUITypes::WriteAppInfoVconfKey("A", Json::Value(), true));
  EXPECT_EQ(fake::StringKey(kKey), "{\"A\":{}}\n");
  EXPECT_TRUE(CustomUITypes::WriteAppInfoVconfKey("B", Json::Value(), true));
  EXPECT_EQ(fake::StringKey(kKey), "{\"A\":{},\"B\":null}\n");
}

TEST(CustomUITypes, JsonThatIsNestedTooDeeplyRaisesAndStays) {
  const std::string deep(5000, '[');
  fake::StoreKey(kKey, deep);
  EXPECT_FALSE(CustomUITypes::WriteAppInfoVconfKey("A", Json::Value(), true));
  EXPECT_EQ(fake::StringKey(kKey), deep);
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), ElementsAre("[ERROR] Exception Caught"));
}

TEST(CustomUITypes, WithoutTheKeyAnExceptionIsThrown) {
  EXPECT_THROW(CustomUITypes::WriteAppInfoVconfKey("A", Json::Value(), false), std::logic_error);
}

}  // namespace
