// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// All threads of the scheduler at the same time. For the thread sanitizer; the counts are
// checked in any build.
#include <algorithm>
#include <atomic>
#include <thread>

#include "app_info/ORVAppInfo.h"
#include "app_info/app_type/ChFeederCustom.h"
#include "unit/controller/scheduler_fixture.h"

namespace {

using testing::AnyOf;
using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;

/// A service app created by the daemon. Its ids are too long for a small string: a text that
/// one thread assigns while another one reads it would be freed memory.
class Feeder {
 public:
  explicit Feeder(const std::string& package, const std::string& type)
      : m_app(ChFeederCustom::DecorateAppType(Base(package), type, ORVScheduler::RequestEvent)) {
    AppInfoCache::GetInstance()->AddAppInfo(package, m_app, true);
  }
  // Not released: the scheduler's thread may use the record until the process ends.
  AppInfo* operator->() const { return m_app; }

 private:
  static AppInfo* Base(const std::string& package) {
    AppBaseInfo info;
    info.m_sPackageID = package;
    info.m_sServiceID = package + ".svc";
    return new ORVAppInfo(info);  // owned by the decorator
  }
  AppInfo* const m_app;
};

class SchedulerStress : public SchedulerTest {
 protected:
  static constexpr int ROUNDS = 200;  // of the main loop
  static constexpr int ADDS = 2 * ROUNDS;
  static constexpr int KEY_CHANGES = 100;  // each is a start and adds a timer
  static constexpr long QUEUE_LIMIT = 256;

  SchedulerStress() {
    support::MakeDirectories("/opt/usr/apps/com.kalmora.tv.orv-enabler/data");
    AppInfoCache::GetInstance()->OpenDB();
    for (int i = 0; i < 4; ++i) {
      m_picked.emplace_back("com-example-a-service-app-that-is-picked-" + std::to_string(i),
                            "standard");
      m_dated.emplace_back("com-example-a-service-app-with-a-due-time" + std::to_string(i),
                           "");  // never on the list
    }
    StartedScheduler();
    fake::SetRecording(false);
    fake::SetLaunchHook([this](const fake::Launch& launch) { return OnLaunch(launch); });
  }
  ~SchedulerStress() override { fake::SetLaunchHook(nullptr); }

  int OnLaunch(const fake::Launch& launch) {
    fake::SetRunning(launch.app, ++m_lastPid);
    return 0;
  }

  void SendCommand(const Feeder& from, std::vector<fake::BundleEntry> message) {
    const std::string sender = from->m_sServiceID;
    fake::Incoming incoming;
    incoming.port = "orv_scheduler_command_port";
    incoming.app = sender.c_str();
    incoming.replyPort = "answers";
    incoming.message = std::move(message);
    EXPECT_TRUE(fake::SendMessage(incoming));
  }
  static std::vector<fake::BundleEntry> SetTime() {
    return fake::Strings(
        {{"orv_scheduler_command", "command_set_expiration_time"}, {"expiration_time", "3600"}});
  }
  static std::vector<fake::BundleEntry> Complete() {
    return fake::Strings({{"orv_scheduler_command", "command_complete_operation"}});
  }

  /// The main loop: commands of service apps and ticks. It sets the pace.
  void RunMainLoop() {
    for (unsigned i = 0; i < ROUNDS; ++i) {
      ++m_round;
      SendCommand(m_dated[i % 4], SetTime());
      SendCommand(m_picked[i % 4], Complete());
      EXPECT_EQ(FireFirstTimer(), 1);
      // The queue never fills up: every post counts.
      EXPECT_TRUE(support::WaitFor([this] { return Scheduler().GetQueue()->Size() < QUEUE_LIMIT; },
                                   "room in the queue"));
    }
  }
  /// Ensures that no thread ends before the others have started.
  void WaitForRound(int round) const {
    while (m_round < round) {
      std::this_thread::yield();
    }
  }
  static int FireFirstTimer() {
    const auto timers = fake::TimersOf(TICK_MS);
    return !timers.empty() && fake::FireTimer(timers.front().id) ? 1 : 0;
  }

  /// The installer's thread: packages are added again, read, and removed from the list. An add and
  /// a pick take the cache's two locks in opposite orders; if they waited for each other, the test
  /// would not end.
  void RunInstaller() {
    for (int i = 0; i < ADDS; ++i) {
      WaitForRound(i * ROUNDS / ADDS);
      m_picked[static_cast<unsigned>(i) % 4]->RunOperation(false);
      m_picked[static_cast<unsigned>(i + 1) % 4]->StopOperation();
      m_dated[static_cast<unsigned>(i) % 4]->GetMetadata("orv_data", "expiration_date_str");
    }
  }

  /// Network time is set again and again.
  void RunKeyCallbacks() {
    for (int i = 0; i < KEY_CHANGES; ++i) {
      WaitForRound(i * ROUNDS / KEY_CHANGES);
      fake::SetKey("memory/menu/network/set_time", 1);
      fake::DeliverKeyChanges();
    }
  }

  /// Runs all at once until all have ended and the task's thread has handled their posts.
  void RunAll() {
    std::thread installer([this] { RunInstaller(); });
    std::thread keys([this] { RunKeyCallbacks(); });
    RunMainLoop();
    installer.join();
    keys.join();
    Drain();
  }

  static int Logged(const std::string& text) {
    const auto texts = fake::LogTexts();
    return static_cast<int>(std::count(texts.begin(), texts.end(), text));
  }

  std::vector<Feeder> m_picked;
  std::vector<Feeder> m_dated;
  pid_t m_lastPid = 1000;  // on the task's thread
  std::atomic<int> m_round{0};
};

TEST_F(SchedulerStress, NothingIsLostWhenAllFourThreadsAreBusy) {
  // Once before the threads start: from here on the due times have a constant length.
  for (const Feeder& feeder : m_dated) {
    SendCommand(feeder, SetTime());
  }
  fake::ClearSentMessages();
  Forget();

  RunAll();

  EXPECT_EQ(Logged("[Debug] [EVENT_APP_TERMINATED]"), ROUNDS);
  EXPECT_EQ(Logged("[Debug] [EVENT_RESET_SCHEDULER]"), ROUNDS);
  // The timer was always running, so an add is not a start.
  EXPECT_EQ(Logged("[Debug] [EVENT_LAUNCH_NEXT_ITEM]"), ADDS);
  EXPECT_EQ(Logged("[Debug] [EVENT_START_SCHEDULER]"), KEY_CHANGES);
  EXPECT_EQ(fake::TimersOf(TICK_MS).size(), 1u + KEY_CHANGES);
  // When two threads end the same app, one of them is too late or finds the item cleared.
  EXPECT_THAT(fake::LogTexts(6),
              Each(AnyOf("[ERROR] app_manager_get_app_context() failed = App is not running",
                         "[ERROR] app_manager_get_app_context() failed = No such application")));

  const auto replies = fake::SentMessages();
  EXPECT_THAT(replies, SizeIs(ROUNDS));
  for (const fake::Outgoing& reply : replies) {
    EXPECT_EQ(reply.result, 0);
    EXPECT_THAT(reply.message.at(0).values, testing::ElementsAre("result_success"));
  }
  for (const Feeder& feeder : m_dated) {
    EXPECT_EQ(feeder->GetMetadata("orv_data", "expiration_date_str"), "2023-11-14T23:13:20Z");
  }
}

TEST_F(SchedulerStress, AfterwardsAStopComesToRest) {
  RunAll();
  const std::size_t timers = fake::TimersOf(TICK_MS).size();

  EXPECT_TRUE(Scheduler().t_SendEvent(EVENT_STOP_SCHEDULER));
  Drain();

  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
  EXPECT_EQ(g_nSchedulerTimerID, 0u);
  // Every start except the last lost its timer's id.
  EXPECT_EQ(fake::TimersOf(TICK_MS).size(), timers - 1);
  Forget();
  EXPECT_TRUE(Scheduler().TerminateCurrentServiceApp());
  EXPECT_THAT(fake::LogTexts(), IsEmpty());  // there is no current item
}

}  // namespace
