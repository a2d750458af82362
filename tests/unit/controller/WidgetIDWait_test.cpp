// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/WidgetIDWait.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "controller/ORVAppCreator.h"
#include "controller/ORVAppOperator.h"
#include "controller/RecordGuard.h"
#include "fake/control/fake.h"
#include "support/files.h"
#include "support/log_matchers.h"
#include "support/other_thread.h"
#include "unit/controller/recording_app.h"

namespace {

using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;

const char INSTALL_KEY[] = "memory/was/app_install";

std::vector<std::string> KeyCalls() {
  return fake::CallTexts({"vconf_ignore_key_changed", "vconf_notify_key_changed"});
}

ORVAppOperator& Operator() {
  return *ORVAppOperator::GetInstance();
}

/// The creator with its store; clears the log afterwards.
ORVAppCreator& Creator() {
  support::MakeDirectories("/opt/usr/apps/com.kalmora.tv.orv-enabler/data");
  ORVAppCreator* creator = ORVAppCreator::GetInstance();
  fake::ClearLog();
  return *creator;
}

TEST(WidgetIDWait, ARunWithoutAWidgetIdWaitsForTheKey) {
  RecordingApp app("a", "");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(KeyCalls(),
              ElementsAre("vconf_ignore_key_changed(memory/was/app_install, set) = -1",
                          "vconf_notify_key_changed(memory/was/app_install, set, set) = 0"));
  EXPECT_EQ(fake::KeySubscriptions(INSTALL_KEY), 1u);
}

TEST(WidgetIDWait, AFailedWaitIsLogged) {
  RecordingApp app("a", "");
  fake::Fail("vconf_notify_key_changed", -7);
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] vconf_notify_key_changed, ret = -7"));
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
}

TEST(WidgetIDWait, APositiveResultOfTheWaitIsAFailureToo) {
  RecordingApp app("a", "");
  fake::Fail("vconf_notify_key_changed", 3);
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] vconf_notify_key_changed, ret = 3"));
}

TEST(WidgetIDWait, TheFirstChangeOfTheKeyIsTheWidgetIdOfWhoWaits) {
  RecordingApp app("a", "");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  fake::ClearCalls();
  fake::ClearLog();
  fake::SetKey(INSTALL_KEY, "widget-of-another-app");
  fake::DeliverKeyChanges();
  EXPECT_EQ(app.m_sWidgetID, "widget-of-another-app");
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(false)"));
  EXPECT_EQ(fake::LogTexts().at(0), "[Debug] sWidgetID = widget-of-another-app");
  EXPECT_THAT(KeyCalls(), ElementsAre("vconf_ignore_key_changed(memory/was/app_install, set) = 0"));
  EXPECT_EQ(fake::KeySubscriptions(INSTALL_KEY), 0u);
}

TEST(WidgetIDWait, TheRowIsWrittenBeforeTheAppRuns) {
  // The store is not open here, so the write logs a line; a run that throws shows its position in
  // the sequence.
  RecordingApp app("a", "");
  app.Throw("running");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  fake::SetKey(INSTALL_KEY, "widget");
  fake::DeliverKeyChanges();
  EXPECT_THAT(
      fake::LogTexts(),
      support::HasLogsInOrder(support::Texts({"[Debug] sWidgetID = widget",
                                              "[ERROR] AppInfoDB::InsertNewRecord() return false.",
                                              "[ERROR] exception : running"})));
}

TEST(WidgetIDWait, OnlyOneRecordCanWait) {
  RecordingApp first("a", "");
  RecordingApp second("b", "");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  Operator().DoOperation("b", OPERATION_TYPE_RUN);
  EXPECT_EQ(fake::KeySubscriptions(INSTALL_KEY), 1u);
  fake::SetKey(INSTALL_KEY, "one");
  fake::SetKey(INSTALL_KEY, "two");
  fake::DeliverKeyChanges();
  EXPECT_EQ(first.m_sWidgetID, "");
  EXPECT_EQ(second.m_sWidgetID, "one");
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("b.run(false)"));
}

TEST(WidgetIDWait, AKeyThatWasRemovedBringsNoWidgetIdAndTheWaitGoesOn) {
  RecordingApp app("a", "");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  fake::StoreKey(INSTALL_KEY, std::string("old"));
  fake::UnsetKey(INSTALL_KEY);
  fake::DeliverKeyChanges();
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : the key holds no widget id"));
  fake::SetKey(INSTALL_KEY, "widget");
  fake::DeliverKeyChanges();
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(false)"));
}

TEST(WidgetIDWait, ARecordThatLeftTheCacheWhileItWaitedIsNotTouched) {
  RecordingApp app("a", "");
  RecordingApp other("b", "");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  AppInfoCache::GetInstance()->RemoveAppInfo("a");
  fake::SetKey(INSTALL_KEY, "widget");
  fake::DeliverKeyChanges();
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_EQ(app.m_sWidgetID, "");
  EXPECT_EQ(other.m_sWidgetID, "");
  EXPECT_EQ(fake::KeySubscriptions(INSTALL_KEY), 0u);
}

TEST(WidgetIDWait, AnExceptionOfTheRunEndsInTheCallback) {
  RecordingApp app("a", "");
  app.Throw("broken");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  fake::SetKey(INSTALL_KEY, "widget");
  EXPECT_NO_THROW(fake::DeliverKeyChanges());
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] exception : broken"));
  EXPECT_EQ(fake::KeySubscriptions(INSTALL_KEY), 0u);
  fake::SetKey(INSTALL_KEY, "widget-of-another-app");
  EXPECT_EQ(fake::DeliverKeyChanges(), 0u);
  EXPECT_EQ(app.m_sWidgetID, "widget");
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(false)"));
}

TEST(WidgetIDWait, AnExceptionOfTheWriteEndsTheWaitToo) {
  support::MakeDirectories("/opt/usr/apps/com.kalmora.tv.orv-enabler/data");
  AppInfoCache::GetInstance()->OpenDB();
  RecordingApp app("a", "");
  app.SetReadHook([] { throw std::runtime_error("a cannot be read"); });
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  fake::SetKey(INSTALL_KEY, "widget");
  EXPECT_NO_THROW(fake::DeliverKeyChanges());
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : a cannot be read"));
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_EQ(fake::KeySubscriptions(INSTALL_KEY), 0u);
}

TEST(WidgetIDWait, TheKeyIsLetGoAfterTheRun) {
  RecordingApp app("a", "");
  std::size_t subscriptionsOfTheRun = 0;
  app.SetHook([&] { subscriptionsOfTheRun = fake::KeySubscriptions(INSTALL_KEY); });
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  fake::SetKey(INSTALL_KEY, "widget");
  fake::DeliverKeyChanges();
  EXPECT_EQ(subscriptionsOfTheRun, 1u);
  EXPECT_EQ(fake::KeySubscriptions(INSTALL_KEY), 0u);
}

TEST(WidgetIDWait, EndsWithItsRecordAlsoWhenANewOneTakesItsAddress) {
  Creator();
  std::optional<RecordingApp> app;
  app.emplace("a", "");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  const AppInfo* const address = &*app;
  Creator().RemoveApp("a");
  app.reset();
  app.emplace("com.example.other", "");
  ASSERT_EQ(&*app, address);
  fake::SetKey(INSTALL_KEY, "widget");
  fake::DeliverKeyChanges();
  EXPECT_EQ(app->m_sWidgetID, "") << "the widget id of another app";
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_EQ(fake::KeySubscriptions(INSTALL_KEY), 0u);
}

TEST(WidgetIDWait, IsNotEndedByTheRemovalOfAnotherRecord) {
  Creator();
  RecordingApp app("a", "");
  RecordingApp other("b", "");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  Creator().RemoveApp("b");
  fake::SetKey(INSTALL_KEY, "widget");
  fake::DeliverKeyChanges();
  EXPECT_EQ(app.m_sWidgetID, "widget");
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(false)"));
}

TEST(WidgetIDWait, EndsWhenItsRecordIsRemovedWhileTheCallbackWaits) {
  Creator();
  RecordingApp app("a", "");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  fake::SetKey(INSTALL_KEY, "widget");
  {
    std::optional<RecordGuard> guard("a");
    support::OtherThread mainLoop([] { fake::DeliverKeyChanges(); });
    ASSERT_TRUE(mainLoop.WaitUntilItStops());
    ASSERT_FALSE(mainLoop.Done());
    Creator().RemoveApp("a");
    guard.reset();
  }
  EXPECT_EQ(app.m_sWidgetID, "");
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
}

TEST(WidgetIDWait, IsOverOnceItHasBeenEnded) {
  RecordingApp app("a", "");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  WidgetIDWait::End(&app);
  fake::SetKey(INSTALL_KEY, "widget");
  fake::DeliverKeyChanges();
  EXPECT_EQ(app.m_sWidgetID, "");
}

}  // namespace
