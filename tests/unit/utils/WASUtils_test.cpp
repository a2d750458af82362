// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/WASUtils.h"

#include <gmock/gmock.h>
#include <was_db.h>

#include <cstddef>

#include "fake/control/calls.h"
#include "fake/control/log.h"
#include "fake/control/was.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

// The service's own layout.
static_assert(sizeof(was_app_list_item_s) == 3212);
static_assert(offsetof(was_app_list_item_s, package_id) == 1024);
static_assert(offsetof(was_app_list_item_s, kind) == 3088);
static_assert(offsetof(was_app_list_item_s, gone) == 3180);
static_assert(offsetof(was_app_info_s, widget_id) == 0);
static_assert(offsetof(was_app_info_s, app_tizen_id) == 896);

fake::WasApp App(const std::string& package, int kind = 2, int gone = 0) {
  fake::WasApp app;
  app.package = package;
  app.app = package + ".app";
  app.widget = package + "-widget";
  app.kind = kind;
  app.gone = gone;
  return app;
}

TEST(WASUtils, AnEmptyServiceGivesAnEmptyMapAndTrue) {
  WASAppList apps;
  EXPECT_TRUE(WASUtils::GetAllWASAppList(apps));
  EXPECT_THAT(apps, IsEmpty());
}

TEST(WASUtils, WebAppsAreListedWithWhetherTheyAreGone) {
  fake::AddWasApp(App("here"));
  fake::AddWasApp(App("gone", 2, 1));
  fake::AddWasApp(App("also gone", 2, -5));
  WASAppList apps;
  EXPECT_TRUE(WASUtils::GetAllWASAppList(apps));
  EXPECT_THAT(apps, ElementsAre(Pair("also gone", true), Pair("gone", true), Pair("here", false)));
}

TEST(WASUtils, EntriesOfAnyOtherKindAreLeftOut) {
  for (int kind : {0, 1, 3, -2, 258}) {
    fake::AddWasApp(App("kind" + std::to_string(kind), kind));
  }
  WASAppList apps;
  EXPECT_TRUE(WASUtils::GetAllWASAppList(apps));
  EXPECT_THAT(apps, IsEmpty());
}

TEST(WASUtils, TheFirstEntryOfAPackageCounts) {
  fake::AddWasApp(App("twice", 1, 1));
  fake::AddWasApp(App("twice", 2, 0));
  fake::AddWasApp(App("twice", 2, 1));
  WASAppList apps = {{"old", true}, {"twice ", true}};
  EXPECT_TRUE(WASUtils::GetAllWASAppList(apps));
  EXPECT_THAT(apps, ElementsAre(Pair("old", true), Pair("twice", false), Pair("twice ", true)));
}

TEST(WASUtils, WhatTheMapHoldsAlreadyStays) {
  fake::AddWasApp(App("a", 2, 0));
  WASAppList apps = {{"a", true}};
  EXPECT_TRUE(WASUtils::GetAllWASAppList(apps));
  EXPECT_THAT(apps, ElementsAre(Pair("a", true)));
}

TEST(WASUtils, AFailingServiceIsAFalseAndLeavesTheMap) {
  fake::AddWasApp(App("a"));
  fake::Fail("was_get_all_app_list", 3);
  WASAppList apps = {{"old", true}};
  EXPECT_FALSE(WASUtils::GetAllWASAppList(apps));
  EXPECT_THAT(apps, ElementsAre(Pair("old", true)));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] was_get_all_app_list failed."));
}

TEST(WASUtils, AKnownAppHasItsWidgetId) {
  fake::AddWasApp(App("a"));
  EXPECT_EQ(WASUtils::GetWidgetIDByAppID("a.app"), "a-widget");
  EXPECT_THAT(fake::LogTexts(4), ElementsAre("[Info] WidgetID : a-widget, app_tizen_id : a.app"));
}

TEST(WASUtils, AnUnknownAppHasNone) {
  EXPECT_EQ(WASUtils::GetWidgetIDByAppID("a.app"), "");
  EXPECT_THAT(fake::LogTexts(4), ElementsAre("[Debug] was_get_app_info_by_tizenid() failed."));
}

TEST(WASUtils, TheEmptyAppIdIsAskedForLikeAnyOther) {
  EXPECT_EQ(WASUtils::GetWidgetIDByAppID(""), "");
  EXPECT_EQ(fake::CallCount("was_get_app_info_by_tizenid"), 1u);
}

TEST(WASUtils, AResultWithoutContentIsAnEmptyWidgetId) {
  fake::Fail("was_get_app_info_by_tizenid", 0);
  EXPECT_EQ(WASUtils::GetWidgetIDByAppID("a.app"), "");
  EXPECT_THAT(fake::LogTexts(4), ElementsAre("[Info] WidgetID : , app_tizen_id : "));
}

}  // namespace
