// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVInstaller.h"

#include <algorithm>
#include <memory>
#include <thread>

#include "controller/ORVScheduler.h"
#include "framework/events.h"
#include "support/drain.h"
#include "unit/app_info/records.h"
#include "unit/controller/allocations.h"
#include "unit/controller/channel_app.h"
#include "unit/controller/installer_fixture.h"

namespace {

using support::HasLog;
using support::HasLogsInOrder;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr unsigned int VALIDATION_MS = 1800 * 1000;
const char RESET_KEY[] = "db/tellahub/reset/apps";
const char STATUS_KEY[] = "memory/hbbtv_status";

/// Creation in steps: nothing is created before the test requests it.
class ORVInstallerCreation : public InstallerTest {
 protected:
  // A thread that still works while the process ends would use freed texts.
  void TearDown() override {
    if (m_starting != nullptr) {
      support::Drain(*m_starting);  // false when there is no thread
    }
  }
  void Create() { m_starting = ORVInstaller::GetInstance(); }
  void CreateAndWaitForTheTask() {
    Create();
    // With a failed subscriber t_Create() ends early; a handled event shows that it has ended.
    FSEvent event;
    event.pReceiver = ORVInstaller::GetInstance();
    event.type = 999;
    ASSERT_TRUE(ORVInstaller::GetInstance()->Send(event, false, true));
    m_starting = nullptr;
  }
  static std::vector<fake::LogRecord> LogsOf(const std::string& thread) {
    std::vector<fake::LogRecord> logs = fake::Logs();
    logs.erase(std::remove_if(logs.begin(), logs.end(),
                              [&](const fake::LogRecord& log) { return log.thread != thread; }),
               logs.end());
    return logs;
  }

 private:
  ORVInstaller* m_starting = nullptr;  // its t_Create() may not have ended
};

TEST_F(ORVInstallerCreation, IsOneTaskOfItsName) {
  Create();
  EXPECT_EQ(ORVInstaller::GetInstance(), ORVInstaller::GetInstance());
  EXPECT_EQ(ORVInstaller::GetInstance()->GetName(), "ORVInstaller");
  EXPECT_THAT(fake::CallTexts({"FCTask::Create"}),
              ElementsAre("FCTask::Create(ORVInstaller, 1000, 8192) = true"));
  EXPECT_EQ(fake::LogTexts().at(0), "[Info] ");
}

TEST_F(ORVInstallerCreation, TheStepsOfTheMainThreadComeInOrder) {
  RecordingApp app("a");
  Create();
  const std::vector<std::string> names = {"FCTask::Create",         "vconf_get_int",
                                          "package_manager_create", "package_manager_set_event_cb",
                                          "g_timeout_add_seconds",  "vconf_notify_key_changed"};
  std::vector<std::string> texts;
  for (const fake::Call& call : fake::Calls()) {
    if (call.threadID == std::this_thread::get_id() &&
        std::find(names.begin(), names.end(), call.name) != names.end()) {
      texts.push_back(fake::ToText(call));
    }
  }
  EXPECT_THAT(texts,
              ElementsAre("FCTask::Create(ORVInstaller, 1000, 8192) = true",
                          "vconf_get_int(db/factory/factory_reset_count) = -1",
                          "vconf_get_int(db/factory/service_reset_count) = -1",
                          "package_manager_create() = 0",
                          "package_manager_set_event_cb(package_manager#1, set, null) = 0",
                          "g_timeout_add_seconds(1800, set, null) = 1",
                          "vconf_notify_key_changed(db/tellahub/reset/apps, set, null) = 0"));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(true)", "a.run(true)"));
}

TEST_F(ORVInstallerCreation, TheRecordsRunBeforeAnyPackageEventTimerOrResetCanCome) {
  RecordingApp app("a");
  app.SetHook([] {
    EXPECT_EQ(fake::CallCount("package_manager_create"), 0u);
    EXPECT_EQ(fake::CallCount("package_manager_set_event_cb"), 0u);
    EXPECT_EQ(fake::CallCount("g_timeout_add_seconds"), 0u);
    EXPECT_EQ(fake::KeySubscriptions(RESET_KEY), 0u);
  });
  Create();
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("a.run(true)", "a.run(true)"));
  EXPECT_EQ(fake::KeySubscriptions(RESET_KEY), 1u);
}

TEST_F(ORVInstallerCreation, AFailedTaskIsLoggedAndTheRestIsDone) {
  fake::Fail("FCTask::Create", 0);
  Create();
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] FCTask::Create() is failed."));
  EXPECT_EQ(fake::PackageEventCallbacks(), 1u);
  EXPECT_EQ(fake::KeySubscriptions(RESET_KEY), 1u);
}

TEST_F(ORVInstallerCreation, StoredAppsRunTwiceAtStart) {
  RecordingApp a("a");
  RecordingApp b("b");
  Create();
  EXPECT_THAT(RecordingApp::Operations(),
              ElementsAre("a.run(true)", "b.run(true)", "a.run(true)", "b.run(true)"));
}

TEST_F(ORVInstallerCreation, StoredRecordsAreLoadedAndThenRun) {
  records::StoreRow("a", "{\"orv_type\":{\"ch_feeder_standard\":\"x\"}}\n");
  Create();
  EXPECT_THAT(fake::LogTexts(), HasLogsInOrder(Texts({"[Info] Target PackageID : a",
                                                      "[Info] GetPackagedDataType bUpdatable:0",
                                                      "[Info] GetPackagedDataType bUpdatable:0"})));
}

TEST_F(ORVInstallerCreation, TheScheduleIsRebuiltFromTheStoredRecordsAndDueTimes) {
  const std::string type = "{\"orv_type\":{\"ch_feeder_custom\":\"standard\"}";
  const std::string due = "{\"expiration_date_str\":\"2030-01-01T00:00:00Z\"}";
  records::StoreRow("a", type + ",\"orv_data\":" + due + "}\n");
  records::StoreRow("b", type + "}\n");
  Create();
  AppInfoCache& cache = *AppInfoCache::GetInstance();
  EXPECT_EQ(cache.GetSchedulingListSize(), 2);
  SchedulingItem item;
  ASSERT_TRUE(cache.GetNextSchedulingItem(item));
  EXPECT_EQ(item.package_id, "b") << "the item that ran last is next";
  EXPECT_EQ(item.expiration_date, "");
  ASSERT_TRUE(cache.GetNextSchedulingItem(item));
  EXPECT_EQ(item.package_id, "a");
  EXPECT_EQ(item.expiration_date, "2030-01-01T00:00:00Z");
  EXPECT_TRUE(support::Drain(*ORVScheduler::GetInstance()));
}

TEST_F(ORVInstallerCreation, TheInstanceIsPublishedLast) {
  // A record that requests the instance while the constructor runs it does not find one: nothing
  // guards the creation. The instance published first is kept.
  RecordingApp app("a");
  ORVInstaller* nested = nullptr;
  app.SetHook([&] {
    app.SetHook(nullptr);
    nested = ORVInstaller::GetInstance();
  });
  ORVInstaller* outer = ORVInstaller::GetInstance();
  EXPECT_EQ(fake::CallCount("package_manager_create"), 2u)
      << "the outer instance was found too early";
  EXPECT_EQ(nested, outer);
  EXPECT_EQ(ORVInstaller::GetInstance(), outer);
  EXPECT_TRUE(support::Drain(*outer));
}

TEST_F(ORVInstallerCreation, ADecisionAboutTheFirstScreenBeforeTheEndIsForgotten) {
  // The task makes its decision while the constructor still runs the records.
  RecordingApp app("a");
  app.SetHook([&] {
    app.SetHook(nullptr);
    ASSERT_TRUE(support::WaitFor([] { return fake::FireAlarms(1004) == 1; }, "the alarm"));
    ASSERT_TRUE(support::WaitFor([] { return fake::CallCount("FCStateAlarm::Destroy") == 1; },
                                 "the end of the decision"));
  });
  Create();
  fake::SetKey(STATUS_KEY, 2);
  fake::DeliverKeyChanges();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] VCONFKEY_HBBTV_CHANGED value 2"));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] first screen already run")));
}

TEST_F(ORVInstallerCreation, AFailedPackageManagerMeansNoTimerAndNoResetKey) {
  fake::Fail("package_manager_create", -12);
  Create();
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] failed to package_manager_create : -12"));
  EXPECT_EQ(fake::CallCount("package_manager_set_event_cb"), 0u);
  EXPECT_THAT(fake::TimersOf(VALIDATION_MS), IsEmpty());
  EXPECT_EQ(fake::KeySubscriptions(RESET_KEY), 0u);
}

TEST_F(ORVInstallerCreation, AFailedEventCallbackMeansNoTimerAndNoResetKey) {
  fake::Fail("package_manager_set_event_cb", -5);
  Create();
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] failed to package_manager_set_event_cb : -5"));
  EXPECT_THAT(fake::TimersOf(VALIDATION_MS), IsEmpty());
  EXPECT_EQ(fake::KeySubscriptions(RESET_KEY), 0u);
}

TEST_F(ORVInstallerCreation, ARefusedResetKeyIsALogLine) {
  // The task reads its own key on its own thread: every read fails here.
  fake::Fail("vconf_notify_key_changed", -1, fake::FOREVER);
  CreateAndWaitForTheTask();
  EXPECT_THAT(fake::LogTexts(6),
              support::HasLogTimes("[ERROR] failed to vconf_notify_key_changed().", 2));
  EXPECT_THAT(fake::TimersOf(VALIDATION_MS), SizeIs(1));
  EXPECT_THAT(fake::Alarms(), SizeIs(1));
}

TEST_F(ORVInstallerCreation, TheTaskSubscribesInOrderAndStartsItsAlarm) {
  CreateAndWaitForTheTask();
  std::vector<int> signals;
  for (const fake::TvSubscription& subscription : fake::TvSubscriptions()) {
    signals.push_back(subscription.signal);
    EXPECT_THAT(subscription.arguments, ElementsAre(0, 1, 0, 0)) << subscription.signal;
  }
  EXPECT_THAT(signals, ElementsAre(75, 135, 103, 170, 25, 2560));
  EXPECT_THAT(fake::ProxySubscriptions(), ElementsAre(90014));
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 1u);
  ASSERT_THAT(fake::Alarms(), SizeIs(1));
  EXPECT_EQ(fake::Alarms()[0].task, "ORVInstaller");
  EXPECT_EQ(fake::Alarms()[0].type, 1004u);
  EXPECT_EQ(fake::Alarms()[0].periodMs, 1000);
  EXPECT_EQ(fake::Alarms()[0].left, 1);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] start timer"));
}

TEST_F(ORVInstallerCreation, TheProxyComesBeforeTheTvServiceAndTheKeyBeforeTheAlarm) {
  CreateAndWaitForTheTask();
  std::vector<std::string> names;
  for (const fake::Call& call : fake::Calls()) {
    if (call.thread == "ORVInstaller") {
      names.push_back(call.name);
    }
  }
  EXPECT_THAT(names, ElementsAre("FIIPCConnection::GetInstance", "FCEMSProxy::GetInstance",
                                 "FCEMSProxy::Subscribe", "TVServiceAPI::CreateSignalSubscriber",
                                 "TCSignalSubscriber::Subscribe", "TCSignalSubscriber::Subscribe",
                                 "TCSignalSubscriber::Subscribe", "TCSignalSubscriber::Subscribe",
                                 "TCSignalSubscriber::Subscribe", "TCSignalSubscriber::Subscribe",
                                 "vconf_notify_key_changed", "FCStateAlarm::Create"));
}

TEST_F(ORVInstallerCreation, TheTaskLogsThatItComesUpAndThatItStartsItsAlarm) {
  CreateAndWaitForTheTask();
  std::vector<std::string> texts;
  for (const fake::LogRecord& log : LogsOf("ORVInstaller")) {
    texts.push_back(fake::WithoutHead(log.text));
  }
  EXPECT_THAT(texts, ElementsAre("[Info] ", "[Info] start timer", "[Info] pEvent : 999",
                                 "[ERROR] Invalid EventType : 999"));
}

TEST_F(ORVInstallerCreation, TheTasksStartIsASuccessUnlessASubscriberIsMissing) {
  CreateAndWaitForTheTask();
  ORVInstaller& installer = *ORVInstaller::GetInstance();
  EXPECT_TRUE(installer.t_Create());
  fake::Fail("vconf_notify_key_changed");
  EXPECT_TRUE(installer.t_Create()) << "the key is not a subscriber";
  fake::Fail("FCEMSProxy::GetInstance");
  EXPECT_FALSE(installer.t_Create());
  fake::Fail("TVServiceAPI::CreateSignalSubscriber", 1);
  EXPECT_FALSE(installer.t_Create());
  fake::Fail("TVServiceAPI::CreateSignalSubscriber", 0);
  EXPECT_FALSE(installer.t_Create());
}

TEST_F(ORVInstallerCreation, WithoutAProxyTheTaskSubscribesToNothing) {
  fake::Fail("FCEMSProxy::GetInstance");
  CreateAndWaitForTheTask();
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] pTvmesaSignalSubscriber is NULL"));
  EXPECT_THAT(fake::TvSubscriptions(), IsEmpty());
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 0u);
  EXPECT_THAT(fake::Alarms(), IsEmpty());
}

TEST_F(ORVInstallerCreation, AFailedTvServiceLeavesTheProxySubscribed) {
  fake::Fail("TVServiceAPI::CreateSignalSubscriber", 1);
  CreateAndWaitForTheTask();
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] pSignalSubscriber is NULL"));
  EXPECT_THAT(fake::ProxySubscriptions(), ElementsAre(90014));
  EXPECT_THAT(fake::TvSubscriptions(), IsEmpty());
  EXPECT_EQ(fake::KeySubscriptions(STATUS_KEY), 0u);
  EXPECT_THAT(fake::Alarms(), IsEmpty());
}

TEST_F(ORVInstallerCreation, ATvServiceThatGivesNoSubscriberCountsAsFailed) {
  fake::Fail("TVServiceAPI::CreateSignalSubscriber", 0);
  CreateAndWaitForTheTask();
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] pSignalSubscriber is NULL"));
  EXPECT_THAT(fake::Alarms(), IsEmpty());
}

TEST_F(ORVInstallerCreation, TheDestructorLetsGoOfThePackageManagerTheAlarmAndTheThread) {
  CreateAndWaitForTheTask();
  fake::ClearCalls();
  delete ORVInstaller::GetInstance();
  const std::vector<std::string> names = fake::CallNames();
  EXPECT_THAT(std::vector<std::string>(names.begin(), names.begin() + 4),
              ElementsAre("package_manager_unset_event_cb", "package_manager_destroy",
                          "FCStateAlarm::Destroy", "FCTask::Destroy"));
  EXPECT_EQ(fake::OpenHandles("package_manager"), 0u);
}

TEST_F(ORVInstallerCreation, TheDestructorLeavesAloneWhatWasNeverCreated) {
  fake::Fail("package_manager_create");
  fake::Fail("FCEMSProxy::GetInstance");
  CreateAndWaitForTheTask();
  fake::ClearCalls();
  delete ORVInstaller::GetInstance();
  EXPECT_EQ(fake::CallCount("package_manager_unset_event_cb"), 0u);
  EXPECT_EQ(fake::CallCount("package_manager_destroy"), 0u);
  EXPECT_THAT(fake::CallNames().at(0), "FCTask::Destroy");
}

/// Sending. The task's own thread handles the posted events.
class ORVInstallerSending : public InstallerTest {
 protected:
  static std::vector<std::string> Sent() { return fake::CallTexts({"FCTask::Send"}); }
};

TEST_F(ORVInstallerSending, AnEventGoesToTheTaskWithItsPayload) {
  EXPECT_TRUE(Installer().t_SendEvent(999, nullptr));
  EXPECT_THAT(Sent(), ElementsAre("FCTask::Send(ORVInstaller, 999, false, false) = true"));
  Drain();
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] event_type[999]", "[Info] pEvent : 999"})));
}

TEST_F(ORVInstallerSending, AnEventContainsItsPayloadAndNothingElse) {
  Installer();
  RecordingApp app("held");
  Gate gate;
  app.SetHook([&gate] { gate.Pass(); });
  ASSERT_TRUE(Installer().t_SendEvent(90014, nullptr));
  ASSERT_TRUE(gate.WaitUntilReached());
  std::string payload;
  ASSERT_TRUE(Installer().t_SendEvent(1005, &payload));
  FSEvent event;
  ASSERT_TRUE(Installer().GetQueue()->Pop(event));
  EXPECT_EQ(event.type, 1005u);
  EXPECT_EQ(event.P0, &payload);
  EXPECT_EQ(event.P1, nullptr);
  gate.Open();
  Drain();
}

TEST_F(ORVInstallerSending, ARefusedEventIsLoggedWithTheSizeOfTheQueueAndItsPayloadStays) {
  auto payload = std::make_unique<std::string>("com.example.a-name-that-is-not-in-place");
  Installer();
  fake::Fail("FCTask::Send", 0);
  EXPECT_FALSE(Installer().t_SendEvent(1000, payload.get()));
  const std::string p0 =
      std::to_string(static_cast<int>(reinterpret_cast<std::intptr_t>(payload.get())));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] event_type[1000]",
                          "[ERROR] Send() return false!!, Name[ORVInstaller] Type[1000] P0[" + p0 +
                              "] P1[0] Size[0]"));
  EXPECT_EQ(*payload, "com.example.a-name-that-is-not-in-place");
}

TEST_F(ORVInstallerSending, AFullQueueRefusesAndTellsItsSize) {
  Installer();
  fake::SetRecording(false);
  RecordingApp app("held");
  Gate gate;
  app.SetHook([&gate] { gate.Pass(); });
  ASSERT_TRUE(Installer().t_SendEvent(90014, nullptr));
  ASSERT_TRUE(gate.WaitUntilReached());
  int accepted = 0;
  while (accepted <= 0x2000 && Installer().t_SendEvent(1005, nullptr)) {
    ++accepted;
  }
  EXPECT_EQ(accepted, 0x2000);
  EXPECT_EQ(fake::LogTexts(6).back(),
            "[ERROR] Send() return false!!, Name[ORVInstaller] Type[1005] P0[0] P1[0] Size[8192]");
  Installer().t_PurgeEvents();
  gate.Open();
  Drain();
}

TEST_F(ORVInstallerSending, PurgingDropsWhatWaitsInTheTasksQueue) {
  Installer();
  RecordingApp app("held");
  Gate gate;
  app.SetHook([&gate] { gate.Pass(); });
  ASSERT_TRUE(Installer().t_SendEvent(90014, nullptr));
  ASSERT_TRUE(gate.WaitUntilReached());
  Installer().t_SendEvent(1005, nullptr);
  Installer().t_SendEvent(1005, nullptr);
  EXPECT_EQ(Installer().GetQueue()->Size(), 2);
  Installer().t_PurgeEvents();
  EXPECT_EQ(Installer().GetQueue()->Size(), 0);
  gate.Open();
  Drain();
  EXPECT_THAT(fake::LogTexts(6), Not(HasLog("[ERROR] Invalid EventType : 1005")));
}

TEST_F(ORVInstallerSending, TheAlarmPostsTheTimeTimerAndIsDestroyedByIt) {
  Installer();
  EXPECT_EQ(fake::FireAlarms(1004), 1u);
  Drain();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] TVS Time Timer"));
  EXPECT_EQ(fake::CallCount("FCStateAlarm::Destroy"), 1u);
  Handle(1004);
  EXPECT_EQ(fake::CallCount("FCStateAlarm::Destroy"), 1u)
      << "a stopped alarm is not destroyed again";
}

/// How the task's events reach their handlers.
class ORVInstallerEvents : public InstallerTest {};

TEST_F(ORVInstallerEvents, APackageEventWithoutAPayloadIsAnErrorAndHandled) {
  for (const int type : {1000, 1001, 1002}) {
    fake::ClearLog();
    EXPECT_TRUE(Handle(type, nullptr));
    EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] pEvent : " + std::to_string(type),
                                              "[ERROR] l[0] param is NULL."));
  }
}

TEST_F(ORVInstallerEvents, UnknownTypesAreErrorsAndHandled) {
  for (const int type : {0, 74, 999, 1005, 90013}) {
    Installer();
    fake::ClearLog();
    EXPECT_TRUE(Handle(type));
    EXPECT_THAT(fake::LogTexts(),
                ElementsAre("[Info] pEvent : " + std::to_string(type),
                            "[ERROR] Invalid EventType : " + std::to_string(type)));
  }
}

TEST_F(ORVInstallerEvents, TheFrameworksOwnEventsAreConsumedSilently) {
  Installer();
  FSEvent event;
  event.pReceiver = &Installer();
  event.type = framework::EVENT_SUSPEND;
  EXPECT_TRUE(Installer().t_OnEvent(&event));
  event.type = framework::EVENT_RESUME;
  EXPECT_TRUE(Installer().t_OnEvent(&event));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(ORVInstallerEvents, AnExceptionOfAHandlerEndsInTheTask) {
  fake::AddPackage(ChannelApp("p"));
  RecordingApp app("p");
  app.SetReadHook([] { throw std::runtime_error("p cannot be read"); });
  Installer();
  EXPECT_TRUE(HandlePackageEvent(1001, "p"));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : p cannot be read"));
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty()) << "nothing runs after the exception";
  app.SetReadHook(nullptr);
  EXPECT_TRUE(HandlePackageEvent(1002, "p"));
  EXPECT_EQ(AppInfoCache::GetInstance()->GetAppInfo("p"), nullptr);
}

TEST_F(ORVInstallerEvents, ThePayloadIsFreedBeforeTheWorkBegins) {
  RecordingApp app("p");
  Installer();
  auto* payload = new std::string("p");  // the handler owns it
  allocations::Watch(payload);
  bool freed = false;
  app.SetHook([&freed] { freed = allocations::WatchedBlockIsFree(); });
  EXPECT_FALSE(allocations::WatchedBlockIsFree());
  EXPECT_TRUE(Handle(1002, payload));
  EXPECT_TRUE(freed);
}

}  // namespace
