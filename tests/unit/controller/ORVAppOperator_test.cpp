// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVAppOperator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fake/control/fake.h"
#include "support/files.h"
#include "support/log_matchers.h"
#include "unit/controller/recording_app.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> KeyCalls() {
  return fake::CallTexts({"vconf_ignore_key_changed", "vconf_notify_key_changed"});
}

ORVAppOperator& Operator() {
  return *ORVAppOperator::GetInstance();
}

TEST(ORVAppOperator, IsOneInstance) {
  EXPECT_EQ(ORVAppOperator::GetInstance(), ORVAppOperator::GetInstance());
}

TEST(ORVAppOperator, AnOperationOnAnUnknownPackageIsALogLine) {
  Operator().DoOperation("gone", OPERATION_TYPE_STOP);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rPackageID : gone, eType : 2",
                                            "[Debug] Cannot find target AppInfo.",
                                            "[Debug] Cannot find target App(rPackageID : gone)"));
}

TEST(ORVAppOperator, ARunOfAKnownWebAppRunsAtOnce) {
  RecordingApp app("a", "widget");
  Operator().DoOperation("a", OPERATION_TYPE_RUN);
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(false)"));
  EXPECT_THAT(KeyCalls(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rPackageID : a, eType : 0"));
}

TEST(ORVAppOperator, UpdateAndStopDoNotWaitForAWidgetId) {
  RecordingApp app("a", "");
  Operator().DoOperation("a", OPERATION_TYPE_UPDATE);
  Operator().DoOperation("a", OPERATION_TYPE_STOP);
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.update", "a.stop"));
  EXPECT_THAT(KeyCalls(), IsEmpty());
}

TEST(ORVAppOperator, AnUnknownOperationIsARun) {
  RecordingApp app("a", "widget");
  Operator().DoOperation("a", static_cast<OperationType>(5));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(false)"));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rPackageID : a, eType : 5"));
}

TEST(ORVAppOperator, AnUnknownOperationDoesNotWaitForAWidgetId) {
  RecordingApp app("a", "");
  Operator().DoOperation("a", static_cast<OperationType>(5));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(false)"));
  EXPECT_THAT(KeyCalls(), IsEmpty());
}

TEST(ORVAppOperator, RunAllAppsAppendsToTheListAndRunsItInOrder) {
  RecordingApp a("a");
  RecordingApp b("b", "");
  std::vector<std::string> ids = {"b"};
  Operator().RunAllApps(ids);
  EXPECT_THAT(ids, ElementsAre("b", "a", "b"));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("b.run(true)", "a.run(true)", "b.run(true)"));
  EXPECT_THAT(KeyCalls(), IsEmpty());
}

TEST(ORVAppOperator, RunAllAppsPassesOverAnIdWithoutARecord) {
  RecordingApp a("a");
  std::vector<std::string> ids = {"gone"};
  Operator().RunAllApps(ids);
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(true)"));
}

TEST(ORVAppOperator, ARecordThatThrowsDoesNotKeepTheOthersFromRunning) {
  RecordingApp a("a");
  RecordingApp b("b");
  a.Throw("a is broken");
  std::vector<std::string> ids;
  EXPECT_NO_THROW(Operator().RunAllApps(ids));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(true)", "b.run(true)"));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : a is broken"));
}

TEST(ORVAppOperator, InstalledAppsRunTwiceOneWholePassAfterTheOther) {
  RecordingApp b("b");
  RecordingApp a("a");
  Operator().RunInstalledApps();
  EXPECT_THAT(RecordingApp::Operations(),
              ElementsAre("a.run(true)", "b.run(true)", "a.run(true)", "b.run(true)"));
}

TEST(ORVAppOperator, AnEmptyCacheRunsNothing) {
  Operator().RunInstalledApps();
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST(ORVAppOperator, ValidationStopsOnlyAppsThatAreGone) {
  RecordingApp a("a");
  RecordingApp b("b");
  RecordingApp c("c");
  fake::AddWasApp({"a", "a.ui", "wa", 2, 0});
  fake::AddWasApp({"b", "b.ui", "wb", 2, 1});
  fake::AddWasApp({"no-record", "x.ui", "wx", 2, 1});
  Operator().RunValidationTesting();
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("b.stop"));
}

TEST(ORVAppOperator, ARecordThatCannotStopDoesNotKeepTheOthersFromTheirStop) {
  RecordingApp a("a");
  RecordingApp b("b");
  a.Throw("a is broken");
  fake::AddWasApp({"a", "a.ui", "wa", 2, 1});
  fake::AddWasApp({"b", "b.ui", "wb", 2, 1});
  EXPECT_NO_THROW(Operator().RunValidationTesting());
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.stop", "b.stop"));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : a is broken"));
}

TEST(ORVAppOperator, AFailedListOfTheWebAppServiceStopsNothing) {
  RecordingApp b("b");
  fake::AddWasApp({"b", "b.ui", "wb", 2, 1});
  fake::Fail("was_get_all_app_list");
  Operator().RunValidationTesting();
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] was_get_all_app_list failed.",
                                            "[Debug] WASUtils::GetAllWASAppList() return false."));
}

}  // namespace
