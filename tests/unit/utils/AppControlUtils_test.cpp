// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/AppControlUtils.h"

#include <app_control.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "fake/control/fake.h"
#include "support/log_matchers.h"
#include "support/other_thread.h"

namespace {

using AppControlUtils::GetCurrentAppIDOfAppOperation;
using AppControlUtils::LaunchApp;
using AppControlUtils::PreloadWebApp;
using AppControlUtils::SetCurrentAppOfAppOperation;
using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

const char DEFAULT[] = "http://tizen.org/appcontrol/operation/default";
const char OPERATION[] = "http://example.org/operation";

using ExtraData = std::map<std::string, std::string>;

TEST(AppControlUtils, ALaunchNamesTheAppAndTheOperationAndNoCallback) {
  EXPECT_TRUE(LaunchApp("com.example.app", OPERATION));
  EXPECT_THAT(
      fake::CallNames(),
      ElementsAre("app_control_create", "app_control_set_app_id", "app_control_set_operation",
                  "app_control_send_launch_request", "app_control_destroy"));
  EXPECT_THAT(fake::Calls("app_control_send_launch_request").at(0).args,
              ElementsAre("app_control#1", "null", "null"));
  ASSERT_THAT(fake::Launches(), SizeIs(1));
  EXPECT_EQ(fake::Launches()[0].app, "com.example.app");
  EXPECT_EQ(fake::Launches()[0].operation, OPERATION);
  EXPECT_THAT(fake::Launches()[0].extra, IsEmpty());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rAppID : com.example.app"));
}

TEST(AppControlUtils, AFailedCreateIsLoggedAndTheHandleDestroyedAllTheSame) {
  fake::Fail("app_control_create", APP_CONTROL_ERROR_OUT_OF_MEMORY);
  EXPECT_FALSE(LaunchApp("com.example.app", OPERATION));
  EXPECT_THAT(fake::CallNames(), ElementsAre("app_control_create", "app_control_destroy"));
  EXPECT_THAT(fake::Calls("app_control_destroy").at(0).args, ElementsAre("null"));
  EXPECT_THAT(
      fake::LogTexts(6),
      ElementsAre("[ERROR] app_control_create() failed. (Error Message[-12] :  Out of Memory"));
}

TEST(AppControlUtils, RefusedSettersDoNotStopALaunch) {
  fake::Fail("app_control_set_app_id", APP_CONTROL_ERROR_INVALID_PARAMETER);
  fake::Fail("app_control_set_operation", APP_CONTROL_ERROR_INVALID_PARAMETER);
  LaunchApp("com.example.app", OPERATION);
  EXPECT_EQ(fake::CallCount("app_control_send_launch_request"), 1u);
}

TEST(AppControlUtils, AFailedRequestIsLoggedAfterTheHandleIsGone) {
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_FAILED});
  EXPECT_FALSE(LaunchApp("com.example.app", OPERATION));
  EXPECT_EQ(fake::OpenHandles("app_control"), 0u);
  ASSERT_THAT(fake::Logs(), SizeIs(2));
  EXPECT_GT(fake::Logs()[1].seq, fake::Calls("app_control_destroy").at(0).seq);
}

struct ErrorText {
  int code;
  const char* text;
};

/// For the names of the tests.
std::ostream& operator<<(std::ostream& stream, const ErrorText& error) {
  return stream << error.code;
}

class AppControlError : public testing::TestWithParam<ErrorText> {};

TEST_P(AppControlError, IsLoggedWithItsText) {
  const std::string code = std::to_string(GetParam().code);
  fake::QueueLaunchResults({GetParam().code, GetParam().code});
  EXPECT_FALSE(LaunchApp("a", OPERATION));
  EXPECT_EQ(LaunchApp("a", OPERATION, ExtraData{}), GetParam().code);
  EXPECT_THAT(fake::LogTexts(6),
              testing::Each("[ERROR] app_control_send_launch_request() failed. (Error Message[" +
                            code + "] : " + GetParam().text));
  EXPECT_THAT(fake::LogTexts(6), SizeIs(2));
}

INSTANTIATE_TEST_SUITE_P(Table, AppControlError,
                         testing::Values(ErrorText{-13, "Permission denied"},
                                         ErrorText{-22, "Invalid parameter"},
                                         ErrorText{-12, "Out of Memory"},
                                         ErrorText{static_cast<int>(0xFEF00021), "App Not Found"},
                                         ErrorText{static_cast<int>(0xFEF00023), "Launch Rejected"},
                                         ErrorText{static_cast<int>(0xFEF00024), "Launch Failed"},
                                         ErrorText{static_cast<int>(0xC0000001), "Timed Out"},
                                         ErrorText{-5, "IO error"},
                                         // Has no text, not even the second time.
                                         ErrorText{-4711, ""}));

TEST(AppControlUtils, ExtraDataIsAddedInKeyOrder) {
  EXPECT_EQ(LaunchApp("app", OPERATION, ExtraData{{"b", "2"}, {"a", "1"}}), 0);
  EXPECT_THAT(
      fake::CallNames(),
      ElementsAre("app_control_create", "app_control_set_app_id", "app_control_set_operation",
                  "app_control_add_extra_data", "app_control_add_extra_data",
                  "app_control_send_launch_request", "app_control_destroy"));
  ASSERT_THAT(fake::Launches(), SizeIs(1));
  EXPECT_THAT(fake::Launches()[0].extra, ElementsAre(Pair("a", "1"), Pair("b", "2")));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rAppID : app, rOperation : http://example.org/operation",
                          "[Debug] key : a, value : 1", "[Debug] key : b, value : 2"));
}

TEST(AppControlUtils, AnEmptyMapAddsNothingAndGivesACode) {
  EXPECT_EQ(LaunchApp("app", OPERATION, ExtraData{}), 0);
  EXPECT_EQ(fake::CallCount("app_control_add_extra_data"), 0u);
  EXPECT_EQ(fake::CallCount("app_control_send_launch_request"), 1u);
}

TEST(AppControlUtils, TheCodeOfAFailedCreateIsHandedBackAndNothingIsDestroyed) {
  fake::Fail("app_control_create", APP_CONTROL_ERROR_PERMISSION_DENIED);
  EXPECT_EQ(LaunchApp("app", OPERATION, ExtraData{{"a", "1"}}), -13);
  EXPECT_THAT(fake::CallNames(), ElementsAre("app_control_create"));
  EXPECT_THAT(
      fake::LogTexts(6),
      ElementsAre("[ERROR] app_control_create() failed. (Error Message[-13] :  Permission denied"));
}

TEST(AppControlUtils, APreloadIsABackgroundLaunchOfTheDefaultOperation) {
  fake::QueueLaunchResults({0, APP_CONTROL_ERROR_LAUNCH_REJECTED});
  EXPECT_EQ(PreloadWebApp("com.example.ui"), 0);
  EXPECT_EQ(PreloadWebApp("com.example.ui"), APP_CONTROL_ERROR_LAUNCH_REJECTED);
  ASSERT_THAT(fake::Launches(), SizeIs(2));  // and no further attempt
  EXPECT_EQ(fake::Launches()[0].app, "com.example.ui");
  EXPECT_EQ(fake::Launches()[0].operation, DEFAULT);
  EXPECT_THAT(fake::Launches()[0].extra,
              ElementsAre(Pair(ORV_LAUNCH_MODE_KEY, "backgroundAtStartup")));
}

TEST(AppControlUtils, TheCurrentAppIsTold) {
  fake::SetOperationApp(OPERATION, "com.example.app");
  EXPECT_EQ(GetCurrentAppIDOfAppOperation(OPERATION), "com.example.app");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Debug] Current AppID : com.example.app"));
}

TEST(AppControlUtils, AnUnreadableCurrentAppIsEmpty) {
  fake::SetOperationApp(OPERATION, "com.example.app");
  fake::Fail("app_operation_get_current_app", APP_CONTROL_ERROR_IO_ERROR);
  EXPECT_EQ(GetCurrentAppIDOfAppOperation(OPERATION), "");
  EXPECT_THAT(
      fake::LogTexts(6),
      ElementsAre("[ERROR] app_control_get_current_app() failed. (error type[-5] : IO error)"));
}

TEST(AppControlUtils, AnOperationThatNobodyServesHasAnEmptyApp) {
  EXPECT_EQ(GetCurrentAppIDOfAppOperation(OPERATION), "");
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] pAppID is NULL"));
}

TEST(AppControlUtils, EnablingTheAppThatIsSetAlreadyWritesNothing) {
  fake::SetOperationApp(OPERATION, "com.example.app");
  EXPECT_TRUE(SetCurrentAppOfAppOperation(OPERATION, "com.example.app", true));
  EXPECT_THAT(fake::CallNames(), ElementsAre("app_operation_get_current_app"));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rOperation : http://example.org/operation, rAppID : "
                          "com.example.app, bEnable : 1",
                          "[Debug] Current AppID : com.example.app", "[Debug] Skipped!!"));
}

TEST(AppControlUtils, EnablingSetsTheApp) {
  fake::SetOperationApp(OPERATION, "com.example.other");
  EXPECT_TRUE(SetCurrentAppOfAppOperation(OPERATION, "com.example.app", true));
  EXPECT_EQ(fake::OperationApp(OPERATION), "com.example.app");
  EXPECT_THAT(fake::LogTexts(), testing::Not(HasLog("[Debug] Skipped!!")));
}

TEST(AppControlUtils, EnablingGoesOnWhenTheCurrentAppCannotBeRead) {
  fake::SetOperationApp(OPERATION, "com.example.app");
  fake::Fail("app_operation_get_current_app");
  EXPECT_TRUE(SetCurrentAppOfAppOperation(OPERATION, "com.example.app", true));
  EXPECT_EQ(fake::CallCount("app_operation_set_current_app"), 1u);
}

TEST(AppControlUtils, ARefusedEnableIsLoggedAndFalse) {
  fake::Fail("app_operation_set_current_app", APP_CONTROL_ERROR_PERMISSION_DENIED);
  EXPECT_FALSE(SetCurrentAppOfAppOperation(OPERATION, "com.example.app", true));
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] app_operation_set_current_app() failed. (error "
                                        "type[-13] : Permission denied)"));
}

TEST(AppControlUtils, DisablingGivesTheOperationBack) {
  fake::SetOperationApp(OPERATION, "com.example.app");
  fake::SetPlatformOperationApp(OPERATION, "com.example.platform");
  EXPECT_TRUE(SetCurrentAppOfAppOperation(OPERATION, "com.example.app", false));
  EXPECT_EQ(fake::OperationApp(OPERATION), "com.example.platform");
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rOperation : http://example.org/operation, rAppID : "
                          "com.example.app, bEnable : 0",
                          "[Debug] Current AppID : com.example.app"));
}

TEST(AppControlUtils, DisablingNeverTakesAwayAnotherAppsPlace) {
  fake::SetOperationApp(OPERATION, "com.example.other");
  EXPECT_TRUE(SetCurrentAppOfAppOperation(OPERATION, "com.example.app", false));
  EXPECT_THAT(fake::CallNames(), ElementsAre("app_operation_get_current_app"));
  EXPECT_EQ(fake::OperationApp(OPERATION), "com.example.other");
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] Skipped!!"));
}

TEST(AppControlUtils, ARefusedDisableIsLoggedAndFalse) {
  fake::SetOperationApp(OPERATION, "com.example.app");
  fake::Fail("app_operation_reset_current_app", APP_CONTROL_ERROR_INVALID_PARAMETER);
  EXPECT_FALSE(SetCurrentAppOfAppOperation(OPERATION, "com.example.app", false));
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] app_operation_reset_current_app() failed. (error "
                                        "type[-22] : Invalid parameter)"));
}

TEST(AppControlUtils, DisablingTheEmptyIdMatchesAnAppThatCannotBeRead) {
  fake::SetOperationApp(OPERATION, "com.example.app");
  fake::Fail("app_operation_get_current_app");
  EXPECT_TRUE(SetCurrentAppOfAppOperation(OPERATION, "", false));
  EXPECT_EQ(fake::CallCount("app_operation_reset_current_app"), 1u);
}

TEST(AppControlUtils, UnknownCodesOnTwoThreadsHaveNoText) {
  fake::SetLaunchHook([](const fake::Launch& launch) { return std::stoi(launch.app); });
  const auto launch = [](int first) {
    for (int code = first; code < first + 1000; ++code) {
      AppControlUtils::LaunchApp(std::to_string(code), "operation");
    }
  };
  support::OtherThread other([&] { launch(1); });
  launch(2001);
  other.Join();
  for (const std::string& text : fake::LogTexts(6)) {
    EXPECT_EQ(text.substr(text.rfind(']')), "] : ") << text;
  }
  EXPECT_EQ(fake::LogTexts(6).size(), 2000u);
}

}  // namespace
