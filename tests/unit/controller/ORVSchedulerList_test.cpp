// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Requests of the decorators, and which item is launched when.
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <functional>
#include <future>
#include <thread>

#include "support/thread_state.h"
#include "unit/controller/gate.h"
#include "unit/controller/scheduler_fixture.h"

namespace {

using support::HasLog;
using support::HasLogsInOrder;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class SchedulerRequest : public SchedulerTest {
 protected:
  static void Request(int type, const std::string& package) {
    std::string text = package;
    ORVScheduler::RequestEvent(type, text.data());
  }
};

TEST_F(SchedulerRequest, OtherTypesAreInvalid) {
  Scheduler();
  for (const int type : {999, 1002, 1006}) {
    Forget();
    Request(type, "a");
    EXPECT_THAT(fake::LogTexts(),
                ElementsAre("[Info] EventType : " + std::to_string(type),
                            "[Debug] Invalid EventType : " + std::to_string(type)));
  }
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(SchedulerRequest, ARequestWithoutAPackageIsLogged) {
  Scheduler();
  ORVScheduler::RequestEvent(EVENT_ADD_ITEM, nullptr);
  ORVScheduler::RequestEvent(EVENT_DELETE_ITEM, nullptr);
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] EventType : 1000", "[Debug] [EVENT_ADD_ITEM]",
                          "[Debug] pParam is NULL", "[Info] EventType : 1001",
                          "[Debug] [EVENT_DELETE_ITEM]", "[Debug] pParam is NULL"));
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(SchedulerRequest, AnAddWhileStoppedAsksForAStart) {
  CustomFeeder a("a");
  Scheduler();
  Request(EVENT_ADD_ITEM, "a");
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 1);
  EXPECT_THAT(Sent(), ElementsAre("1002"));
  Drain();
}

TEST_F(SchedulerRequest, AnAddWhileRunningAsksForTheNextItem) {
  CustomFeeder a("a");
  StartedScheduler();
  Forget();
  Request(EVENT_ADD_ITEM, "a");
  EXPECT_THAT(Sent(), ElementsAre("1005"));
  Drain();
  EXPECT_THAT(LaunchedApps(), ElementsAre("a.service"));
}

TEST_F(SchedulerRequest, AnAddOfAnUnknownPackagePostsAllTheSame) {
  Scheduler();
  Request(EVENT_ADD_ITEM, "nobody");
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] EventType : 1000", "[Debug] [EVENT_ADD_ITEM]",
                                    "[Info] rPackageID : nobody",
                                    "[Debug] Cannot find the target PackageID in m_mapAppList : "
                                    "nobody"})));
  EXPECT_THAT(Sent(), ElementsAre("1002"));
  Drain();
}

TEST_F(SchedulerRequest, AnAddPutsThePackageFirstAndOnce) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  Scheduler();
  Request(EVENT_ADD_ITEM, "a");
  Request(EVENT_ADD_ITEM, "b");
  Request(EVENT_ADD_ITEM, "a");
  Drain();
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 2);
  SchedulingItem item;
  ASSERT_TRUE(AppInfoCache::GetInstance()->GetNextSchedulingItem(item));
  EXPECT_EQ(item.package_id, "a");
}

TEST_F(SchedulerRequest, AnAddOfTheCurrentPackageKillsItsServiceAppAndRelaunchesIt) {
  CustomFeeder a("a");
  StartedScheduler();
  fake::SetRunning("a.service", 4711);
  Forget();
  Request(EVENT_ADD_ITEM, "a");
  EXPECT_THAT(KilledPids(), ElementsAre(4711));
  Drain();
  EXPECT_THAT(LaunchedApps(), ElementsAre("a.service"));
}

TEST_F(SchedulerRequest, AnAddOfTheCurrentPackageKillsItsAppBeforeItIsPutFirst) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  MakeCurrent(a.record, 4711);
  AppInfoCache::GetInstance()->AddSchedulingItem("b");
  Forget();
  Request(EVENT_ADD_ITEM, "a");
  Drain();  // without network time the posted start does nothing
  EXPECT_THAT(KilledPids(), ElementsAre(4711));
  const std::vector<std::string> logs = fake::LogTexts();
  ASSERT_GE(logs.size(), 5u);
  EXPECT_THAT(std::vector<std::string>(logs.begin(), logs.begin() + 5),
              ElementsAre("[Info] EventType : 1000", "[Debug] [EVENT_ADD_ITEM]",
                          "[Info] Current ServiceApp ID : a.service", "[Debug] Tartget pid : 4711",
                          "[Info] rPackageID : a"));
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 2);
  SchedulingItem item;
  ASSERT_TRUE(AppInfoCache::GetInstance()->GetNextSchedulingItem(item));
  EXPECT_EQ(item.package_id, "a");
}

TEST_F(SchedulerRequest, AnAddOfTheCurrentPackageNotDueKillsItsAppForGood) {
  CustomFeeder a("a");
  StartedScheduler();
  fake::SetRunning("a.service", 4711);
  a.record.Put("orv_data", "expiration_date_str", "2023-11-14T22:13:21Z");
  Forget();
  Request(EVENT_ADD_ITEM, "a");
  EXPECT_THAT(KilledPids(), ElementsAre(4711));
  Drain();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] now : 1700000000, time : 1700000001"));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
}

TEST_F(SchedulerRequest, AnAddOfAnotherPackageKillsNothingByItself) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  MakeCurrent(a.record);
  Request(EVENT_ADD_ITEM, "b");  // posts a start, which is dropped without network time
  Drain();
  EXPECT_THAT(KilledPids(), IsEmpty());
}

TEST_F(SchedulerRequest, ADeleteTakesThePackageOffTheListAndPostsNothing) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  Scheduler();
  AppInfoCache::GetInstance()->ResetSchedulingList();
  Request(EVENT_DELETE_ITEM, "a");
  Request(EVENT_DELETE_ITEM, "b");
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(SchedulerRequest, ADeleteOfWhatIsNotOnTheListIsLogged) {
  Scheduler();
  Request(EVENT_DELETE_ITEM, "nobody");
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Info] EventType : 1001", "[Debug] [EVENT_DELETE_ITEM]",
                  "[Info] rPackageID : nobody",
                  "[Debug] Cannot find the target PackageID in m_vSchedulingList : nobody"));
}

TEST_F(SchedulerRequest, ADeleteOfTheCurrentPackageKillsItsServiceAppAndStartsNoOther) {
  CustomFeeder a("a");
  CustomFeeder b("b");
  MakeCurrent(a.record, 4711);
  AppInfoCache::GetInstance()->AddSchedulingItem("b");
  Forget();
  Request(EVENT_DELETE_ITEM, "a");
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] EventType : 1001", "[Debug] [EVENT_DELETE_ITEM]",
                          "[Info] Current ServiceApp ID : a.service", "[Debug] Tartget pid : 4711",
                          "[Info] rPackageID : a",
                          "[Debug] Cannot find the target PackageID in m_vSchedulingList : a"));
  EXPECT_THAT(KilledPids(), ElementsAre(4711));
  EXPECT_THAT(Sent(), IsEmpty());
  EXPECT_THAT(LaunchedApps(), IsEmpty());
}

TEST_F(SchedulerRequest, AFailedKillDoesNotKeepTheListFromChanging) {
  CustomFeeder a("a");
  MakeCurrent(a.record);
  fake::Fail("app_manager_terminate_app");
  Request(EVENT_ADD_ITEM, "a");
  EXPECT_EQ(fake::FailureCount("app_manager_terminate_app"), 1u);
  EXPECT_THAT(KilledPids(), IsEmpty());
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 1);
  Drain();
  MakeCurrent(a.record);
  AppInfoCache::GetInstance()->AddSchedulingItem("a");
  fake::Fail("app_manager_terminate_app");
  Request(EVENT_DELETE_ITEM, "a");
  EXPECT_EQ(fake::FailureCount("app_manager_terminate_app"), 2u);
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
}

TEST_F(SchedulerRequest, TheEmptyPackageMatchesAnEmptyCurrentItemWithoutAPlatformCall) {
  Scheduler();
  Request(EVENT_DELETE_ITEM, "");
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

class LaunchNextItem : public SchedulerTest {
 protected:
  /// Picks "a", due at the given time, from the list.
  bool LaunchDueAt(const std::string& due) {
    m_feeder.record.Put("orv_data", "expiration_date_str", due);
    Scheduler();
    AppInfoCache::GetInstance()->AddSchedulingItem("a");
    Forget();
    return Scheduler().LaunchNextItem();
  }
  CustomFeeder m_feeder{"a"};
};

TEST_F(LaunchNextItem, AnEmptyListIsNotRefilled) {
  EXPECT_FALSE(Scheduler().LaunchNextItem());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] m_vSchedulingList.size() : 0",
                                            "[Debug] Scheduling List is empty!!!"));
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
}

TEST_F(LaunchNextItem, AnEmptyListKeepsTheCurrentItem) {
  MakeCurrent(m_feeder.record);
  EXPECT_FALSE(Scheduler().LaunchNextItem());
  Forget();
  Scheduler().TerminateCurrentServiceApp();
  EXPECT_EQ(fake::LogTexts().at(0), "[Info] Current ServiceApp ID : a.service");
}

TEST_F(LaunchNextItem, AnAppWithoutADueTimeIsLaunchedAtOnce) {
  EXPECT_TRUE(LaunchDueAt(""));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] m_vSchedulingList.size() : 1",
                          "[Debug] rTime : ", "[Debug] now : 1700000000, time : 0",
                          "[Info] rAppID : a.service", "[Debug] timeUTCStr : 2023-11-14T22:13:20Z",
                          "[Debug] Launched Time : 2023-11-14T22:13:20Z"));
  ASSERT_THAT(fake::Launches(), SizeIs(1));
  EXPECT_EQ(fake::Launches()[0].app, "a.service");
  EXPECT_EQ(fake::Launches()[0].operation, "http://tizen.org/appcontrol/operation/default");
  EXPECT_THAT(fake::Launches()[0].extra, IsEmpty());
}

TEST_F(LaunchNextItem, AnAppThatIsDueThisSecondIsLaunched) {
  EXPECT_TRUE(LaunchDueAt("2023-11-14T22:13:20Z"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] now : 1700000000, time : 1700000000"));
  EXPECT_THAT(LaunchedApps(), ElementsAre("a.service"));
}

TEST_F(LaunchNextItem, AnAppThatIsDueInASecondIsNotLaunchedAndLeavesTheList) {
  EXPECT_TRUE(LaunchDueAt("2023-11-14T22:13:21Z"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] now : 1700000000, time : 1700000001"));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
  Forget();
  EXPECT_TRUE(Scheduler().TerminateCurrentServiceApp()) << "the item is current but not running";
  EXPECT_THAT(fake::CallNames(), ElementsAre("app_manager_is_running"));
  Forget();
  EXPECT_TRUE(Scheduler().TerminateCurrentServiceApp());
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(LaunchNextItem, AMalformedDueTimeIsNotRefused) {
  EXPECT_TRUE(LaunchDueAt("soon"));
  // The last day before 1900, cut to the digits that "%d" prints, is long past.
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts(
                  {"[Debug] rTime : soon", "[Debug] now : 1700000000, time : 2085892096",
                   "[Info] rAppID : a.service", "[Debug] Launched Time : 2023-11-14T22:13:20Z"})));
  EXPECT_THAT(LaunchedApps(), ElementsAre("a.service"));
}

TEST_F(LaunchNextItem, AFailedLaunchIsFalseAndTheItemIsGone) {
  Scheduler();
  fake::QueueLaunchResults({-13});
  EXPECT_FALSE(LaunchDueAt(""));
  EXPECT_THAT(fake::LogTexts(6).back(), "[ERROR] AppControlUtils::LaunchApp() return false.");
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
}

TEST_F(LaunchNextItem, AfterAFailedLaunchTheItemIsCurrentThoughNoAppOfItRuns) {
  Scheduler();
  fake::QueueLaunchResults({-13});
  EXPECT_FALSE(LaunchDueAt(""));
  Forget();
  EXPECT_TRUE(Scheduler().TerminateCurrentServiceApp());
  EXPECT_THAT(fake::CallTexts(), ElementsAre("app_manager_is_running(a.service) = 0"));
}

TEST_F(LaunchNextItem, AnAppThatSetsNoDueTimeIsLaunchedEachTimeItIsPicked) {
  EXPECT_TRUE(LaunchDueAt(""));
  fake::AdvanceTime(1);
  AppInfoCache::GetInstance()->ResetSchedulingList();
  EXPECT_TRUE(Scheduler().LaunchNextItem());
  EXPECT_THAT(LaunchedApps(), ElementsAre("a.service", "a.service"));
}

TEST_F(LaunchNextItem, IdsWithoutARecordAreDrainedSilently) {
  CustomFeeder gone("gone");
  Scheduler();
  AppInfoCache::GetInstance()->AddSchedulingItem("gone");
  AppInfoCache::GetInstance()->RemoveAppInfo("gone");
  Forget();
  EXPECT_FALSE(Scheduler().LaunchNextItem());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] m_vSchedulingList.size() : 1",
                                            "[Debug] Scheduling List is empty!!!"));
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
}

TEST_F(LaunchNextItem, LooksAtOneItemOnly) {
  CustomFeeder b("b");
  Scheduler();
  AppInfoCache::GetInstance()->AddSchedulingItem("b");
  EXPECT_TRUE(LaunchDueAt("2099-01-01T00:00:00Z"));
  EXPECT_THAT(LaunchedApps(), IsEmpty());
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 1);
}

/// Which lock an operation takes, and which one it holds while it waits for the other. The app
/// list's lock is held by an iteration that waits at a gate; others may read the record meanwhile.
class SchedulingLocks : public SchedulerTest {
 protected:
  void SetUp() override {
    m_feeder.record.SetReadHook([this] {
      if (!m_held.exchange(true)) {
        m_gate.Pass();
      }
    });
    m_walk = std::thread([] {
      std::vector<PreloadingApp> apps;
      AppInfoCache::GetInstance()->GetPreloadingApps(apps);
    });
    ASSERT_TRUE(m_gate.WaitUntilReached());
  }
  void TearDown() override {
    m_gate.Open();
    for (std::thread* thread : {&m_walk, &m_operation, &m_reader}) {
      if (thread->joinable()) {
        thread->join();
      }
    }
  }

  /// Starts the operation and waits until it is blocked on a lock.
  void StartAndLetWait(std::thread& thread, std::function<void()> operation) {
    std::promise<pid_t> started;
    thread = std::thread([&started, operation] {
      started.set_value(gettid());
      operation();
    });
    const pid_t id = started.get_future().get();
    ASSERT_TRUE(
        support::WaitFor([id] { return support::SleepsOnALock(id); }, "the thread at a lock"));
  }
  /// Whether the operation ends while the lock is held.
  testing::AssertionResult Ends(std::function<void()> operation) {
    m_operation = std::thread([this, operation] {
      operation();
      m_ended = true;
    });
    return support::WaitFor([this] { return m_ended.load(); }, "an end without the lock");
  }

  CustomFeeder m_feeder{"a"};
  Gate m_gate;
  std::thread m_walk;
  std::thread m_operation;
  std::thread m_reader;
  std::atomic<bool> m_held{false};
  std::atomic<bool> m_ended{false};
  std::atomic<bool> m_read{false};
  std::vector<std::string> m_ids;  // of m_operation until m_ended
};

TEST_F(SchedulingLocks, TheIdsOfTheRecordsAreListedWithoutALock) {
  ASSERT_TRUE(Ends([this] { AppInfoCache::GetInstance()->GetAppIDList(m_ids); }));
  EXPECT_THAT(m_ids, ElementsAre("a"));
}

TEST_F(SchedulingLocks, TheIdsOfOneTypeAreListedWithoutALock) {
  ASSERT_TRUE(
      Ends([this] { AppInfoCache::GetInstance()->GetAppIDListByType("ch_feeder_custom", m_ids); }));
  EXPECT_THAT(m_ids, ElementsAre("a"));
}

TEST_F(SchedulingLocks, TheRowsOfTheStoreAreReadWithoutALock) {
  EXPECT_TRUE(Ends([] {
    AppInfoDB::RowMap rows;
    AppInfoCache::GetInstance()->LoadData(rows);
  }));
}

TEST_F(SchedulingLocks, TheStoreIsOpenedUnderTheAppListsLock) {
  StartAndLetWait(m_operation, [] { AppInfoCache::GetInstance()->OpenDB(); });
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Info] Start")));
}

TEST_F(SchedulingLocks, ARecordIsLookedForByItsAddressUnderTheAppListsLock) {
  StartAndLetWait(m_operation,
                  [this] { m_ended = AppInfoCache::GetInstance()->HasAppInfo(&m_feeder.record); });
  EXPECT_FALSE(m_ended);
  m_gate.Open();
  m_operation.join();
  EXPECT_TRUE(m_ended);
}

TEST_F(SchedulingLocks, AnAddTakesTheAppListBeforeTheSchedulingList) {
  StartAndLetWait(m_operation, [] { AppInfoCache::GetInstance()->AddSchedulingItem("a"); });
  // The add holds no lock yet: the list can be read.
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
}

TEST_F(SchedulingLocks, ARefillTakesTheSchedulingListBeforeTheAppList) {
  StartAndLetWait(m_operation, [] { AppInfoCache::GetInstance()->ResetSchedulingList(); });
  StartAndLetWait(m_reader, [this] {
    AppInfoCache::GetInstance()->GetSchedulingListSize();
    m_read = true;
  });
  EXPECT_FALSE(m_read);
}

class SchedulingLocksOfAPick : public SchedulingLocks {
 protected:
  void SetUp() override {
    AppInfoCache::GetInstance()->AddSchedulingItem("a");
    SchedulingLocks::SetUp();
  }
};

TEST_F(SchedulingLocksOfAPick, APickTakesTheSchedulingListBeforeTheAppList) {
  StartAndLetWait(m_operation, [] {
    SchedulingItem item;
    AppInfoCache::GetInstance()->GetNextSchedulingItem(item);
  });
  StartAndLetWait(m_reader, [this] {
    AppInfoCache::GetInstance()->GetSchedulingListSize();
    m_read = true;
  });
  EXPECT_FALSE(m_read);
}

TEST_F(SchedulingLocksOfAPick, ClearingTakesTheAppListBeforeItForgetsAnything) {
  StartAndLetWait(m_operation, [] { AppInfoCache::GetInstance()->ClearCacheAndDB(); });
  // It holds no lock yet: the list can be read.
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 1);
  m_gate.Open();
  m_operation.join();
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
}

/// Here the app list's lock is held by the write of a row, during which everything is cleared.
class SchedulingLocksOfClearing : public SchedulingLocks {
 protected:
  void SetUp() override {
    support::MakeDirectories("/opt/usr/apps/com.kalmora.tv.orv-enabler/data");
    AppInfoCache::GetInstance()->OpenDB();
    m_feeder.record.SetReadHook([this] {
      if (m_held.exchange(true)) {
        return;
      }
      m_gate.Pass();
      AppInfoCache::GetInstance()->ClearCacheAndDB();
      m_ended = true;
    });
    m_walk = std::thread(
        [this] { AppInfoCache::GetInstance()->AddAppInfo("a", &m_feeder.record, true); });
    ASSERT_TRUE(m_gate.WaitUntilReached());
  }
};

TEST_F(SchedulingLocksOfClearing, ClearingLeavesTheListsLockAlone) {
  // The refill now has the list's lock and waits for the app list's lock.
  StartAndLetWait(m_operation, [] { AppInfoCache::GetInstance()->ResetSchedulingList(); });
  m_gate.Open();
  // A deadlocked thread can be neither ended nor abandoned.
  if (!support::WaitFor([this] { return m_ended.load(); }, "the end of the clearing")) {
    ADD_FAILURE() << "clearing waits for the list's lock";
    std::_Exit(1);
  }
  m_walk.join();
  m_operation.join();
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0);
}

}  // namespace
