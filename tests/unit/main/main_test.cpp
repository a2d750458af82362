// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCTaskList.h>
#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "controller/ORVInstaller.h"
#include "controller/ORVScheduler.h"
#include "fake/control/fake.h"
#include "support/log_matchers.h"

/// The daemon's entry point, under its name in this program.
int OrvEnablerMain(int argc, char* argv[]);
extern GMainLoop* g_pMainLoop;

namespace {

using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class MainTest : public testing::Test {
 protected:
  MainTest() { fake::ClearCalls(); }  // static initialisers have already read their paths
  /// The tasks outlive the entry point: both must have started before the program destroys the
  /// static texts that they use.
  void TearDown() override {
    if (fake::CallCount("FCTask::Create") == 0) {
      return;
    }
    Drain(*ORVScheduler::GetInstance());
    Drain(*ORVInstaller::GetInstance());
  }

  /// Runs the daemon, and `body` while the daemon is in its main loop.
  static int Run(std::function<void()> body = nullptr) {
    fake::SetMainLoopBody(std::move(body));
    char name[] = "orv-enabler";
    char* argv[] = {name, nullptr};
    return OrvEnablerMain(1, argv);
  }

  /// Returns at once when the task could not be created.
  static void Drain(FCTask& task) {
    FSEvent event;
    event.pReceiver = task.GetHandler();
    event.type = 999;
    task.Send(event, false, true);
  }

  /// The calls of the entry point and its tasks, only from the test's thread.
  static std::vector<std::string> Calls() {
    static const std::vector<std::string> s_names = {
        "g_main_loop_new",   "g_main_loop_run",    "g_main_loop_unref",
        "FCSyncDet::Create", "FCSyncDet::Destroy", "FCTaskList::FlagInitialize",
        "FCList::Create",    "FCList::Destroy",    "FCTask::Create",
        "FCTask::Destroy",   "g_timeout_add",      "smart_deadlock_register_watchdog_service"};
    std::vector<std::string> texts;
    for (const fake::Call& call : fake::Calls()) {
      if (call.threadID == std::this_thread::get_id() &&
          std::find(s_names.begin(), s_names.end(), call.name) != s_names.end()) {
        texts.push_back(fake::ToText(call));
      }
    }
    return texts;
  }
};

TEST_F(MainTest, TheStepsOfStartAndEndComeInOrder) {
  EXPECT_EQ(Run(), 0);
  EXPECT_THAT(
      Calls(),
      ElementsAre("g_main_loop_new(null, 0) = main_loop#1", "FCSyncDet::Create() = true",
                  "FCTaskList::FlagInitialize() = 0", "FCList::Create() = true",
                  "FCTask::Create(ORVScheduler, 1000, 8192) = true",
                  "FCTask::Create(ORVInstaller, 1000, 8192) = true",
                  "smart_deadlock_register_watchdog_service(120) = 0",
                  "g_timeout_add(10000, set, set) = 2", "g_timeout_add(60000, set, null) = 3",
                  "g_main_loop_run(main_loop#1) = void", "FCSyncDet::Destroy() = true",
                  "FCList::Destroy() = true", "g_main_loop_unref(main_loop#1) = void"));
  EXPECT_EQ(fake::OpenHandles("main_loop"), 0u);
}

TEST_F(MainTest, TheLaunchAndTheIdOfTheWatchdogTimerAreLogged) {
  unsigned int id = 0;
  Run([&] { id = fake::TimersOf(10000).at(0).id; });
  EXPECT_EQ(fake::LogTexts().at(0), "[Debug] orv-enabler is launched.");
  EXPECT_THAT(fake::LogTexts(),
              HasLog("[Debug] SMART_DEADLOCK CallbackId = " + std::to_string(id)));
}

TEST_F(MainTest, WithoutAMainLoopNothingElseStarts) {
  fake::Fail("g_main_loop_new");
  EXPECT_EQ(Run(), 0);
  EXPECT_THAT(fake::CallNames(), ElementsAre("g_main_loop_new"));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] orv-enabler is launched.", "[ERROR] g_pMainLoop is NULL"));
  EXPECT_THAT(fake::LogTexts(6), SizeIs(1));
}

TEST_F(MainTest, AListThatIsUsableAlreadyIsNotCreated) {
  fake::Fail("FCTaskList::FlagInitialize", 1);
  Run();
  EXPECT_EQ(fake::CallCount("FCList::Create"), 0u);
  EXPECT_EQ(fake::CallCount("FCList::Destroy"), 1u);
}

TEST_F(MainTest, AListThatIsThereAlreadyIsKept) {
  auto* list = new FCList();  // owned by FCTaskList; deleted at the end of main
  FCTaskList::m_pTaskList = list;
  bool kept = false;
  Run([&] { kept = FCTaskList::m_pTaskList == list; });
  EXPECT_TRUE(kept);
  EXPECT_EQ(FCTaskList::m_pTaskList, nullptr);
}

TEST_F(MainTest, BothTasksAreInTheListWhileTheLoopRunsAndTheListIsGoneAfterIt) {
  std::size_t tasks = 0;
  Run([&] { tasks = FCTaskList::m_pTaskList->Size(); });
  EXPECT_EQ(tasks, 2u);
  EXPECT_EQ(FCTaskList::m_pTaskList, nullptr);
}

TEST_F(MainTest, TheInstancesAreNotDeleted) {
  ORVInstaller* installer = nullptr;
  ORVScheduler* scheduler = nullptr;
  Run([&] {
    installer = ORVInstaller::GetInstance();
    scheduler = ORVScheduler::GetInstance();
  });
  EXPECT_EQ(fake::CallCount("FCTask::Create"), 2u);
  EXPECT_EQ(fake::CallCount("FCTask::Destroy"), 0u);
  EXPECT_EQ(ORVInstaller::GetInstance(), installer);
  EXPECT_EQ(ORVScheduler::GetInstance(), scheduler);
}

TEST_F(MainTest, TasksThatCannotBeCreatedDoNotKeepTheLoopFromRunning) {
  fake::Fail("FCTask::Create", 0, 2);
  bool ran = false;
  EXPECT_EQ(Run([&] { ran = true; }), 0);
  EXPECT_TRUE(ran);
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] FCTask::Create() return false."));
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] FCTask::Create() is failed."));
}

TEST_F(MainTest, TheWatchdogIsNotifiedEveryTenSecondsWithTheLoop) {
  std::vector<void*> notifications;
  void* loop = nullptr;
  Run([&] {
    loop = g_pMainLoop;
    fake::AdvanceTimers(9999);
    EXPECT_THAT(fake::WatchdogNotifications(), IsEmpty());
    fake::AdvanceTimers(1);
    EXPECT_THAT(fake::WatchdogNotifications(), SizeIs(1));
    fake::AdvanceTimers(110 * 1000);
    notifications = fake::WatchdogNotifications();
  });
  EXPECT_EQ(fake::WatchdogTimeout(), 120);
  ASSERT_NE(loop, nullptr);
  EXPECT_THAT(notifications, SizeIs(12));
  EXPECT_THAT(notifications, testing::Each(loop));
}

TEST_F(MainTest, MemoryIsTrimmedEveryMinute) {
  Run([] {
    fake::AdvanceTimers(59999);
    EXPECT_EQ(fake::CallCount("malloc_trim"), 0u);
    fake::AdvanceTimers(1);
    fake::AdvanceTimers(60000);
  });
  EXPECT_THAT(fake::CallTexts({"malloc_trim"}),
              testing::Each(testing::StartsWith("malloc_trim(0) = ")));
  EXPECT_EQ(fake::CallCount("malloc_trim"), 2u);
}

TEST_F(MainTest, BothTimersRepeatAndAreNeverRemoved) {
  Run([] {
    for (const unsigned int interval : {10000u, 60000u}) {
      ASSERT_THAT(fake::TimersOf(interval), SizeIs(1));
      const fake::Timer timer = fake::TimersOf(interval)[0];
      EXPECT_FALSE(timer.inSeconds);
      for (int round = 0; round < 3; ++round) {
        EXPECT_TRUE(timer.function(timer.data)) << interval;
      }
    }
    fake::AdvanceTimers(600 * 1000);
  });
  EXPECT_THAT(fake::TimersOf(10000), SizeIs(1));
  EXPECT_THAT(fake::TimersOf(60000), SizeIs(1));
  EXPECT_EQ(fake::CallCount("g_source_remove"), 0u);
}

}  // namespace
