// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_context.h>
#include <app_control.h>
#include <app_manager.h>
#include <app_manager_extension.h>
#include <app_operation.h>

#include "contract_test.h"

namespace contract {
namespace {

constexpr const char* APP = "contract.app";
constexpr const char* OPERATION = "http://contract/operation";

class Apps : public Contract {
 protected:
  void InstallApp() { Tv().Install({"contract", "1.0.0", {{APP, true, {}}}}); }

  static int LaunchApp(const char* app) {
    app_control_h request = nullptr;
    EXPECT_EQ(0, app_control_create(&request));
    EXPECT_EQ(0, app_control_set_app_id(request, app));
    EXPECT_EQ(0, app_control_set_operation(request, APP_CONTROL_OPERATION_DEFAULT));
    EXPECT_EQ(0, app_control_add_extra_data(request, "key", "value"));
    const int result = app_control_send_launch_request(request, nullptr, nullptr);
    EXPECT_EQ(0, app_control_destroy(request));
    return result;
  }

  static bool IsRunning(const char* app) {
    bool running = false;
    EXPECT_EQ(0, app_manager_is_running(app, &running));
    return running;
  }
};

TEST_F(Apps, ALaunchRequestRefusesNull) {
  EXPECT_EQ(APP_CONTROL_ERROR_INVALID_PARAMETER, app_control_destroy(nullptr));
  EXPECT_EQ(APP_CONTROL_ERROR_INVALID_PARAMETER, app_control_set_app_id(nullptr, APP));
  EXPECT_EQ(APP_CONTROL_ERROR_INVALID_PARAMETER,
            app_control_send_launch_request(nullptr, nullptr, nullptr));
}

TEST_F(Apps, AnUnknownAppIsNotFound) {
  EXPECT_EQ(APP_CONTROL_ERROR_APP_NOT_FOUND, LaunchApp("org.unknown.app"));
}

TEST_F(Apps, AnInstalledAppIsLaunched) {
  InstallApp();
  EXPECT_FALSE(IsRunning(APP));
  EXPECT_EQ(APP_CONTROL_ERROR_NONE, LaunchApp(APP));
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return IsRunning(APP); }));
}

TEST_F(Apps, AnUnknownAppDoesNotRun) {
  EXPECT_FALSE(IsRunning("org.unknown.app"));
}

TEST_F(Apps, TheContextTellsUnknownFromNotRunning) {
  app_context_h context = nullptr;
  EXPECT_EQ(APP_MANAGER_ERROR_NO_SUCH_APP,
            app_manager_get_app_context("org.unknown.app", &context));
  InstallApp();
  EXPECT_EQ(APP_MANAGER_ERROR_APP_NO_RUNNING, app_manager_get_app_context(APP, &context));
  EXPECT_EQ(nullptr, context);
}

TEST_F(Apps, TheContextOfARunningAppHasItsPid) {
  InstallApp();
  Tv().StartApp(APP);
  app_context_h context = nullptr;
  ASSERT_EQ(0, app_manager_get_app_context(APP, &context));
  pid_t pid = 0;
  EXPECT_EQ(0, app_context_get_pid(context, &pid));
  EXPECT_GT(pid, 1);
  EXPECT_EQ(0, app_context_destroy(context));
}

TEST_F(Apps, ADestroyedContextStillAnswersOrLeavesThePid) {
  InstallApp();
  Tv().StartApp(APP);
  app_context_h context = nullptr;
  ASSERT_EQ(0, app_manager_get_app_context(APP, &context));
  pid_t before = 0;
  ASSERT_EQ(0, app_context_get_pid(context, &before));
  ASSERT_EQ(0, app_context_destroy(context));
  pid_t after = 1;
  const int result = app_context_get_pid(context, &after);
  EXPECT_EQ(result == 0 ? before : 1, after);
}

TEST_F(Apps, ARunningAppIsAskedToEnd) {
  InstallApp();
  Tv().StartApp(APP);
  app_context_h context = nullptr;
  ASSERT_EQ(0, app_manager_get_app_context(APP, &context));
  EXPECT_EQ(0, app_manager_terminate_app(context));
  EXPECT_EQ(0, app_context_destroy(context));
}

TEST_F(Apps, AnEndedAppDoesNotRun) {
  InstallApp();
  Tv().StartApp(APP);
  EXPECT_TRUE(IsRunning(APP));
  Tv().StopApp(APP);
  EXPECT_FALSE(IsRunning(APP));
}

class Operations : public Contract {
 protected:
  /// "null" when no app serves the operation.
  static std::string Current(const char* operation) {
    char* app = nullptr;
    EXPECT_EQ(0, app_operation_get_current_app(operation, &app));
    return Taken(app);
  }
};

TEST_F(Operations, HaveNoAppUntilOneIsSet) {
  EXPECT_EQ("null", Current(OPERATION));
}

TEST_F(Operations, HaveTheAppThatWasSet) {
  EXPECT_EQ(0, app_operation_set_current_app(OPERATION, APP));
  EXPECT_EQ(APP, Current(OPERATION));
  EXPECT_EQ(0, app_operation_set_current_app(OPERATION, "org.other"));
  EXPECT_EQ("org.other", Current(OPERATION));
  EXPECT_EQ("null", Current("http://contract/other"));
}

TEST_F(Operations, TakeAnEmptyApp) {
  EXPECT_EQ(0, app_operation_set_current_app(OPERATION, ""));
  EXPECT_EQ("", Current(OPERATION));
}

TEST_F(Operations, GoBackWithAReset) {
  const std::string before = Current(OPERATION);
  app_operation_set_current_app(OPERATION, APP);
  EXPECT_EQ(0, app_operation_reset_current_app(OPERATION));
  EXPECT_EQ(before, Current(OPERATION));
  EXPECT_EQ(0, app_operation_reset_current_app(OPERATION));
}

TEST_F(Operations, RefuseNull) {
  char* app = nullptr;
  EXPECT_NE(0, app_operation_get_current_app(nullptr, &app));
  EXPECT_EQ(nullptr, app);
  EXPECT_NE(0, app_operation_set_current_app(nullptr, APP));
  EXPECT_NE(0, app_operation_set_current_app(OPERATION, nullptr));
  EXPECT_NE(0, app_operation_reset_current_app(nullptr));
}

}  // namespace
}  // namespace contract
