// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// All threads of the scheduler at work at once. Meant for the thread sanitizer; what is counted
// holds in any build.
#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <thread>

#include "app_info/ORVAppInfo.h"
#include "app_info/app_type/ChFeederCustom.h"
#include "controller/scheduler_fixture.h"

namespace {

using testing::Each;
using testing::SizeIs;

/// A service app of the daemon's own making. Its ids fit into a string without an allocation, and
/// so does the due time of those that are ever picked (none): what the threads then do to the
/// scheduler's current item without a lock tears texts but frees nothing twice.
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

/// Stops the task's thread within a launch, where it holds no lock, while somebody works.
///
/// An add and a pick take the cache's two locks in opposite orders, so that they can wait for each
/// other for good. The test has to end: the adds come while the task's thread is held here.
/// Deletes, which take one lock, come at any time.
class LaunchStop {
 public:
  void Pass() {
    if (!m_wanted) return;
    m_there = true;
    while (m_wanted) std::this_thread::yield();
    m_there = false;
  }
  template <typename Work>
  void During(Work work) {
    m_wanted = true;
    EXPECT_TRUE(support::WaitFor([this] { return m_there.load(); }, "the task in a launch",
                                 std::chrono::seconds(60)));
    work();
    m_wanted = false;
    EXPECT_TRUE(support::WaitFor([this] { return !m_there; }, "the launch's end"));
  }

 private:
  std::atomic<bool> m_wanted{false};
  std::atomic<bool> m_there{false};
};

class SchedulerStress : public SchedulerTest {
 protected:
  static constexpr int kRounds = 60;       // of the installer's thread
  static constexpr int kKeyChanges = 100;  // each is a start, and so one more timer
  static constexpr long kQueueLimit = 256;

  SchedulerStress() {
    support::MakeDirectories("/opt/usr/apps/com.kalmora.tv.orv-enabler/data");
    AppInfoCache::GetInstance()->OpenDB();
    for (int i = 0; i < 4; ++i) {
      m_picked.emplace_back("pick" + std::to_string(i), "standard");
      m_dated.emplace_back("date" + std::to_string(i), "");  // never on the list
    }
    StartedScheduler();
    fake::SetRecording(false);
    fake::SetLaunchHook([this](const fake::Launch& launch) { return OnLaunch(launch); });
  }
  ~SchedulerStress() override { fake::SetLaunchHook(nullptr); }

  int OnLaunch(const fake::Launch& launch) {
    fake::SetRunning(launch.app, ++m_lastPid);
    m_stop.Pass();
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

  /// The main loop: commands of service apps and ticks, until the others are done.
  void RunMainLoop() {
    for (unsigned round = 0; !m_installerDone || !m_keysDone; ++round) {
      SendCommand(m_dated[round % 4], SetTime());
      ++m_timesSet;
      SendCommand(m_picked[round % 4], Complete());
      ++m_completes;
      m_ticks += FireFirstTimer();
      // The queue never fills up: every post counts.
      EXPECT_TRUE(support::WaitFor([this] { return Scheduler().GetQueue()->Size() < kQueueLimit; },
                                   "room in the queue"));
    }
  }
  static int FireFirstTimer() {
    const auto timers = fake::TimersOf(kTickMs);
    return !timers.empty() && fake::FireTimer(timers.front().id) ? 1 : 0;
  }

  /// The installer's thread: packages come again, are looked at, and go from the list.
  void RunInstaller() {
    for (int round = 0; round < kRounds; ++round) {
      const Feeder& feeder = m_picked[static_cast<unsigned>(round) % 4];
      m_stop.During([&feeder] { feeder->RunOperation(false); });
      ++m_adds;
      m_picked[static_cast<unsigned>(round + 1) % 4]->StopOperation();
      m_dated[static_cast<unsigned>(round) % 4]->GetMetadata("orv_data", "expiration_date_str");
    }
    m_installerDone = true;
  }

  /// Network time is told again and again.
  void RunKeyCallbacks() {
    for (int i = 0; i < kKeyChanges; ++i) {
      fake::SetKey("memory/menu/network/set_time", 1);
      fake::DeliverKeyChanges();
      EXPECT_TRUE(support::WaitFor([this] { return Scheduler().GetQueue()->Size() < kQueueLimit; },
                                   "room in the queue"));
    }
    m_keysDone = true;
  }

  static int Logged(const std::string& text) {
    const auto texts = fake::LogTexts();
    return static_cast<int>(std::count(texts.begin(), texts.end(), text));
  }

  std::vector<Feeder> m_picked;
  std::vector<Feeder> m_dated;
  LaunchStop m_stop;
  pid_t m_lastPid = 1000;  // on the task's thread
  std::atomic<bool> m_installerDone{false};
  std::atomic<bool> m_keysDone{false};
  int m_completes = 0;
  int m_ticks = 0;
  int m_timesSet = 0;
  int m_adds = 0;
};

TEST_F(SchedulerStress, NothingIsLostWhenAllFourThreadsAreBusy) {
  // Once before the threads start: the due times have their length from here on.
  for (const Feeder& feeder : m_dated) SendCommand(feeder, SetTime());
  fake::ClearSentMessages();
  Forget();

  std::thread installer([this] { RunInstaller(); });
  std::thread keys([this] { RunKeyCallbacks(); });
  RunMainLoop();
  installer.join();
  keys.join();
  Drain();

  EXPECT_GE(m_ticks, kRounds / 4);
  EXPECT_EQ(Logged("[Debug] [EVENT_APP_TERMINATED]"), m_completes);
  EXPECT_EQ(Logged("[Debug] [EVENT_RESET_SCHEDULER]"), m_ticks);
  // The timer ran all the time, so an add is no start.
  EXPECT_EQ(Logged("[Debug] [EVENT_LAUNCH_NEXT_ITEM]"), m_adds);
  EXPECT_EQ(Logged("[Debug] [EVENT_START_SCHEDULER]"), kKeyChanges);
  EXPECT_EQ(fake::TimersOf(kTickMs).size(), 1u + kKeyChanges);
  EXPECT_THAT(fake::LogTexts(6), SizeIs(0));

  const auto replies = fake::SentMessages();
  EXPECT_EQ(static_cast<int>(replies.size()), m_timesSet);
  for (const fake::Outgoing& reply : replies) {
    EXPECT_EQ(reply.result, 0);
    EXPECT_THAT(reply.message.at(0).values, testing::ElementsAre("result_success"));
  }
  for (const Feeder& feeder : m_dated) {
    EXPECT_EQ(feeder->GetMetadata("orv_data", "expiration_date_str"), "2023-11-14T23:13:20Z");
  }
}

TEST_F(SchedulerStress, AfterwardsAStopComesToRest) {
  std::thread installer([this] { RunInstaller(); });
  std::thread keys([this] { RunKeyCallbacks(); });
  RunMainLoop();
  installer.join();
  keys.join();
  Drain();
  const std::size_t timers = fake::TimersOf(kTickMs).size();

  EXPECT_TRUE(Scheduler().t_SendEvent(EVENT_STOP_SCHEDULER));
  Drain();

  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
  EXPECT_EQ(g_nSchedulerTimerID, 0u);
  // Every start but the last lost its timer's id.
  EXPECT_EQ(fake::TimersOf(kTickMs).size(), timers - 1);
  Forget();
  EXPECT_TRUE(Scheduler().TerminateCurrentServiceApp());
  EXPECT_THAT(fake::LogTexts(), SizeIs(0));  // there is no current item
}

}  // namespace
