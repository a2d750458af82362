// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/AppTypeRegistry.h"

#include "unit/controller/creator_fixture.h"

namespace {

using AppTypeRegistryTest = CreatorTest;

TEST_F(AppTypeRegistryTest, ListsTheTypesInTheOrderOfTheirRegistration) {
  std::vector<std::string> types;
  for (const auto& [type, creator] : GetAppTypes()) {
    types.push_back(type);
    EXPECT_NE(creator.first, nullptr) << type;
    EXPECT_NE(creator.second, nullptr) << type;
  }
  EXPECT_THAT(types, testing::ElementsAre("ch_feeder_standard", "ch_feeder_custom",
                                          "custom_ui_standard", "custom_ui_extended"));
}

TEST_F(AppTypeRegistryTest, TheInstanceKnowsTheFourTypes) {
  EXPECT_FALSE(ORVAppCreator::IsSupportedAppType("ch_feeder_standard"));
  Creator();
  EXPECT_TRUE(ORVAppCreator::IsSupportedAppType("ch_feeder_standard"));
  EXPECT_TRUE(ORVAppCreator::IsSupportedAppType("ch_feeder_custom"));
  EXPECT_TRUE(ORVAppCreator::IsSupportedAppType("custom_ui_standard"));
  EXPECT_TRUE(ORVAppCreator::IsSupportedAppType("custom_ui_extended"));
  EXPECT_FALSE(ORVAppCreator::IsSupportedAppType("orv_app"));
  EXPECT_FALSE(ORVAppCreator::IsSupportedAppType(""));
  EXPECT_FALSE(ORVAppCreator::IsSupportedAppType("ch_feeder"));
}

TEST_F(AppTypeRegistryTest, AFeederPackageBecomesARecordAndLeavesItsChannelOnRemoval) {
  fake::AddPackage(MakePackage("pkg", {{TypeKey("ch_feeder_standard"), "standard"},
                                       {DataKey("channel_data_url"), "http://x/ch"}}));
  fake::AddWasApp({"pkg", "pkg.app", "pkg-widget"});
  EXPECT_TRUE(Creator().CreateApp("pkg"));
  AppInfo* record = Find("pkg");
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->GetAppType(), "ch_feeder_standard");
  EXPECT_EQ(record->m_sAppID, "pkg.app");
  EXPECT_EQ(record->m_sWidgetID, "pkg-widget");
  EXPECT_EQ(record->m_sVersion, "1.2.3");
  EXPECT_EQ(record->GetMetadata("orv_data", "channel_data_url"), "http://x/ch");
  Creator().RemoveApp("pkg");
  ASSERT_THAT(fake::ChannelRequests(), testing::SizeIs(1));
  EXPECT_EQ(fake::ChannelRequests()[0].operation, "RemoveAppInfo");
}

TEST_F(AppTypeRegistryTest, ACustomFeederTellsTheSchedulerWhenItIsRemoved) {
  fake::AddPackage(MakePackage("pkg", {{TypeKey("ch_feeder_custom"), "standard"}}));
  EXPECT_TRUE(Creator().CreateApp("pkg"));
  Cache().AddSchedulingItem("pkg");
  Creator().RemoveApp("pkg");
  EXPECT_EQ(Cache().GetSchedulingListSize(), 0);
}

}  // namespace
