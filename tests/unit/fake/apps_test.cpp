// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_context.h>
#include <app_control.h>
#include <app_manager.h>
#include <app_manager_extension.h>
#include <app_operation.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <cerrno>
#include <cstdlib>
#include <string>

#include "fake/control/fake.h"
#include "fake_fixture.h"

namespace {

using testing::ElementsAre;
using testing::Pair;

int LaunchApp(const char* app) {
  app_control_h handle = nullptr;
  app_control_create(&handle);
  app_control_set_app_id(handle, app);
  app_control_set_operation(handle, APP_CONTROL_OPERATION_DEFAULT);
  app_control_add_extra_data(handle, "mode", "background");
  const int result = app_control_send_launch_request(handle, nullptr, nullptr);
  app_control_destroy(handle);
  return result;
}

class Launches : public FakeTest {};

TEST_F(Launches, GiveTheQueuedResultsThenSuccess) {
  fake::QueueLaunchResults({APP_CONTROL_ERROR_LAUNCH_REJECTED, 0, APP_CONTROL_ERROR_TIMED_OUT});
  EXPECT_EQ(APP_CONTROL_ERROR_LAUNCH_REJECTED, LaunchApp("a"));
  EXPECT_EQ(0, LaunchApp("b"));
  EXPECT_EQ(APP_CONTROL_ERROR_TIMED_OUT, LaunchApp("c"));
  EXPECT_EQ(0, LaunchApp("d"));
  const auto launches = fake::Launches();
  ASSERT_EQ(4U, launches.size());
  EXPECT_EQ("a", launches[0].app);
  EXPECT_EQ(APP_CONTROL_OPERATION_DEFAULT, launches[0].operation);
  EXPECT_THAT(launches[0].extra, ElementsAre(Pair("mode", "background")));
  EXPECT_EQ(APP_CONTROL_ERROR_LAUNCH_REJECTED, launches[0].result);
  EXPECT_EQ(0U, fake::OpenHandles("app_control"));
}

TEST_F(Launches, RunTheHookOnTheCallersThread) {
  fake::SetLaunchHook([](const fake::Launch& launch) {
    fake::SetRunning(launch.app, 77);
    return launch.app == "bad" ? -5 : 0;
  });
  EXPECT_EQ(0, LaunchApp("good"));
  EXPECT_TRUE(fake::IsRunning("good"));
  EXPECT_EQ(-5, LaunchApp("bad"));
}

TEST_F(Launches, WithoutARequestAreRefused) {
  app_control_h handle = nullptr;
  EXPECT_EQ(APP_CONTROL_ERROR_INVALID_PARAMETER, app_control_destroy(nullptr));
  EXPECT_EQ(APP_CONTROL_ERROR_INVALID_PARAMETER, app_control_set_app_id(nullptr, "a"));
  fake::Fail("app_control_create", APP_CONTROL_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(APP_CONTROL_ERROR_OUT_OF_MEMORY, app_control_create(&handle));
  EXPECT_EQ(nullptr, handle);
  EXPECT_TRUE(fake::Launches().empty());
}

TEST_F(Launches, ThatAreUsedAfterTheirEndAreRefused) {
  app_control_h handle = nullptr;
  app_control_create(&handle);
  EXPECT_EQ(0, app_control_destroy(handle));
  EXPECT_EQ(APP_CONTROL_ERROR_INVALID_PARAMETER, app_control_destroy(handle));
}

class RunningApps : public FakeTest {};

TEST_F(RunningApps, AnswerForTheirPidAlsoWhenTheContextIsDestroyed) {
  fake::SetRunning("app", 4711);
  app_context_h context = nullptr;
  ASSERT_EQ(0, app_manager_get_app_context("app", &context));
  EXPECT_EQ(0, app_manager_terminate_app(context));
  EXPECT_EQ(0, app_context_destroy(context));
  EXPECT_EQ(0U, fake::OpenHandles("app_context"));
  pid_t pid = 1;
  EXPECT_EQ(0, app_context_get_pid(context, &pid));
  EXPECT_EQ(4711, pid);
  fake::SetDestroyedContextsAnswer(false);
  pid = 1;
  EXPECT_EQ(APP_MANAGER_ERROR_INVALID_PARAMETER, app_context_get_pid(context, &pid));
  EXPECT_EQ(1, pid);
  EXPECT_THAT(fake::CallTexts({"app_manager_terminate_app"}),
              ElementsAre("app_manager_terminate_app(app_context#1) = 0"));
}

TEST_F(RunningApps, EndByTheKillSignalOnly) {
  fake::SetRunning("app", 4711);
  EXPECT_EQ(0, kill(4711, SIGTERM));
  EXPECT_TRUE(fake::IsRunning("app"));
  EXPECT_EQ(0, kill(4711, SIGKILL));
  EXPECT_FALSE(fake::IsRunning("app"));
  errno = 0;
  EXPECT_EQ(-1, kill(4711, SIGKILL));
  EXPECT_EQ(ESRCH, errno);
  EXPECT_EQ(3U, fake::Kills().size());
}

TEST_F(RunningApps, DifferFromKnownAndFromUnknownApps) {
  app_context_h context = nullptr;
  EXPECT_EQ(APP_MANAGER_ERROR_NO_SUCH_APP, app_manager_get_app_context("app", &context));
  fake::SetRunning("app", 4);
  fake::SetStopped("app");
  EXPECT_EQ(APP_MANAGER_ERROR_APP_NO_RUNNING, app_manager_get_app_context("app", &context));
  fake::SetRunning("app", 5);
  EXPECT_EQ(0, app_manager_get_app_context("app", &context));
  bool running = true;
  EXPECT_EQ(0, app_manager_is_running("nobody", &running));
  EXPECT_FALSE(running);
}

class Operations : public FakeTest {};

TEST_F(Operations, GoBackToThePlatformsApp) {
  fake::SetPlatformOperationApp("op", "platform");
  EXPECT_EQ(0, app_operation_set_current_app("op", ""));
  EXPECT_EQ("", fake::OperationApp("op"));
  char* app = nullptr;
  EXPECT_EQ(0, app_operation_get_current_app("op", &app));
  EXPECT_STREQ("", app);
  std::free(app);
  EXPECT_EQ(0, app_operation_reset_current_app("op"));
  EXPECT_EQ("platform", fake::OperationApp("op"));
}

TEST_F(Operations, RunTheHookBeforeTheChange) {
  std::string seen;
  fake::SetOperationApp("op", "old");
  fake::SetOperationHook([&](const std::string& operation, const std::string& app) {
    seen += operation + ": " + fake::OperationApp(operation).value_or("") + " to " + app + "\n";
  });
  EXPECT_EQ(0, app_operation_set_current_app("op", "new"));
  EXPECT_EQ("new", fake::OperationApp("op"));
  fake::SetOperationHook(nullptr);
  EXPECT_EQ(0, app_operation_set_current_app("op", "newer"));
  EXPECT_EQ("op: old to new\n", seen);
}

}  // namespace
