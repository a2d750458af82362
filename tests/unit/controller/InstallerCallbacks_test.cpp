// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/InstallerCallbacks.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <thread>

#include "unit/controller/allocations.h"
#include "unit/controller/boost_fixture.h"

namespace {

using support::Exists;
using support::HasLog;
using support::HasLogsInOrder;
using support::HasLogTimes;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNull;
using testing::NotNull;

constexpr unsigned int VALIDATION_MS = 1800 * 1000;
const char RESET_KEY[] = "db/tellahub/reset/apps";

AppInfo* Cached(const std::string& package) {
  return AppInfoCache::GetInstance()->GetAppInfo(package);
}

/// The callbacks that only post. The task's own thread handles the posted events.
class InstallerCallbacks : public InstallerTest {
 protected:
  static std::vector<std::string> Sent() { return fake::CallTexts({"FCTask::Send"}); }
};

TEST_F(InstallerCallbacks, APackageEventThatIsRefusedLeavesItsPackageIdAllocated) {
  Installer();
  fake::Fail("FCTask::Send", 0);
  allocations::WatchNext();
  PackageManagerEventCallback(
      "wgt", "com.example.a-name-that-is-not-in-place", PACKAGE_MANAGER_EVENT_TYPE_INSTALL,
      PACKAGE_MANAGER_EVENT_STATE_COMPLETED, 100, PACKAGE_MANAGER_ERROR_NONE, nullptr);
  const std::unique_ptr<std::string> payload(
      static_cast<std::string*>(allocations::WatchedBlock()));
  ASSERT_NE(payload, nullptr) << "the sender freed it";
  const std::string p0 =
      std::to_string(static_cast<int>(reinterpret_cast<std::intptr_t>(payload.get())));
  ASSERT_THAT(fake::LogTexts(6),
              ElementsAre("[ERROR] Send() return false!!, Name[ORVInstaller] Type[1000] P0[" + p0 +
                          "] P1[0] Size[0]"));
  EXPECT_EQ(*payload, "com.example.a-name-that-is-not-in-place");
}

TEST_F(InstallerCallbacks, CompletedPackageEventsArePostedByKind) {
  Installer();
  fake::FirePackageEvent("p", PACKAGE_MANAGER_EVENT_TYPE_INSTALL);
  fake::FirePackageEvent("p", PACKAGE_MANAGER_EVENT_TYPE_UNINSTALL);
  fake::FirePackageEvent("p", PACKAGE_MANAGER_EVENT_TYPE_UPDATE);
  EXPECT_THAT(Sent(), ElementsAre("FCTask::Send(ORVInstaller, 1000, false, false) = true",
                                  "FCTask::Send(ORVInstaller, 1002, false, false) = true",
                                  "FCTask::Send(ORVInstaller, 1001, false, false) = true"));
  Drain();
}

TEST_F(InstallerCallbacks, PackageEventsThatAreNotCompletedPostNothing) {
  Installer();
  for (const auto type : {PACKAGE_MANAGER_EVENT_TYPE_INSTALL, PACKAGE_MANAGER_EVENT_TYPE_UNINSTALL,
                          PACKAGE_MANAGER_EVENT_TYPE_UPDATE}) {
    for (const auto state :
         {PACKAGE_MANAGER_EVENT_STATE_STARTED, PACKAGE_MANAGER_EVENT_STATE_PROCESSING,
          PACKAGE_MANAGER_EVENT_STATE_FAILED}) {
      EXPECT_EQ(fake::FirePackageEvent("p", type, state), 1u);
    }
  }
  EXPECT_THAT(Sent(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(InstallerCallbacks, AnUnknownKindOfPackageEventPostsNothing) {
  Installer();
  PackageManagerEventCallback("wgt", "p", static_cast<package_manager_event_type_e>(3),
                              PACKAGE_MANAGER_EVENT_STATE_COMPLETED, 100,
                              PACKAGE_MANAGER_ERROR_NONE, nullptr);
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(InstallerCallbacks, ThePackageIdIsCopiedBeforeTheCallbackReturns) {
  Installer();
  std::string package = "com.example.package-with-a-long-name";
  PackageManagerEventCallback("wgt", package.c_str(), PACKAGE_MANAGER_EVENT_TYPE_UNINSTALL,
                              PACKAGE_MANAGER_EVENT_STATE_COMPLETED, 100,
                              PACKAGE_MANAGER_ERROR_NONE, nullptr);
  package.assign(package.size(), '#');
  Drain();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] packageID : com.example.package-with-a-long-name"));
}

TEST_F(InstallerCallbacks, APackageEventWithoutAPackageEndsInTheCallback) {
  Installer();
  EXPECT_NO_THROW(PackageManagerEventCallback("wgt", nullptr, PACKAGE_MANAGER_EVENT_TYPE_INSTALL,
                                              PACKAGE_MANAGER_EVENT_STATE_COMPLETED, 100,
                                              PACKAGE_MANAGER_ERROR_NONE, nullptr));
  EXPECT_THAT(Sent(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] The package event has no package id."));
}

TEST_F(InstallerCallbacks, TheProxySignalIsPostedUnderItsNumber) {
  Installer();
  EXPECT_EQ(tvmesa_signal_callback(90014, nullptr), 1);
  EXPECT_THAT(Sent(), ElementsAre("FCTask::Send(ORVInstaller, 90014, false, false) = true"));
  EXPECT_EQ(fake::LogTexts().at(0), "[Info] signalType[90014]");
  Drain();
}

TEST_F(InstallerCallbacks, AnotherProxySignalIsOnlyLogged) {
  Installer();
  EXPECT_EQ(tvmesa_signal_callback(90013, nullptr), 1);
  EXPECT_EQ(tvmesa_signal_callback(90015, nullptr), 1);
  EXPECT_THAT(Sent(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] signalType[90013]", "[Info] signalType[90015]"));
}

TEST_F(InstallerCallbacks, TheProxyCallsBackThroughItsSubscription) {
  Installer();
  EXPECT_TRUE(fake::FireProxySignal(90014));
  EXPECT_THAT(Sent(), ElementsAre("FCTask::Send(ORVInstaller, 90014, false, false) = true"));
  Drain();
}

TEST_F(InstallerCallbacks, TheValidationTimerFiresOnceAfterHalfAnHour) {
  Installer();
  EXPECT_EQ(fake::AdvanceTimers(VALIDATION_MS - 1), 0u);
  EXPECT_EQ(fake::AdvanceTimers(1), 1u);
  EXPECT_THAT(Sent(), ElementsAre("FCTask::Send(ORVInstaller, 1003, false, false) = true"));
  EXPECT_THAT(fake::TimersOf(VALIDATION_MS), IsEmpty());
  Drain();
}

TEST_F(InstallerCallbacks, AnExceptionEndsInEveryCallbackThatOnlyPosts) {
  Installer();
  const std::vector<std::function<int()>> callbacks = {
      [] { return tvmesa_signal_callback(90014, nullptr) == 1 ? 0 : 1; },
      [] { return tvs_signal_callback(75, nullptr, nullptr) == 1 ? 0 : 1; },
      [] { return ValidationTimerCallback(nullptr); },
      [] {
        PackageManagerEventCallback("wgt", "p", PACKAGE_MANAGER_EVENT_TYPE_INSTALL,
                                    PACKAGE_MANAGER_EVENT_STATE_COMPLETED, 100,
                                    PACKAGE_MANAGER_ERROR_NONE, nullptr);
        return 0;
      }};
  for (const auto& callback : callbacks) {
    fake::ClearLog();
    allocations::FailNext();
    EXPECT_NO_THROW(EXPECT_EQ(callback(), 0));
    EXPECT_FALSE(allocations::CancelFailure());
    EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : std::bad_alloc"));
  }
  EXPECT_THAT(Sent(), IsEmpty());
}

class TellahubReset : public InstallerTest {
 protected:
  void SetResetKey(int value) {
    fake::SetKey(RESET_KEY, value);
    EXPECT_EQ(fake::DeliverKeyChanges(), 1u);
  }
};

TEST_F(TellahubReset, ZeroRunsEveryRecordTwiceAndThenRemovesIt) {
  RecordingApp a("a");
  RecordingApp b("b");
  Installer();
  SetResetKey(0);
  EXPECT_THAT(RecordingApp::Operations(),
              ElementsAre("a.run(true)", "b.run(true)", "a.run(true)", "b.run(true)"));
  EXPECT_THAT(Cached("a"), IsNull());
  EXPECT_THAT(Cached("b"), IsNull());
  EXPECT_THAT(
      fake::LogTexts(),
      HasLogsInOrder(Texts({"[Debug] VCONFKEY_TELLAHUB_RESET value 0", "[Debug] Reset AppInfo",
                            "[Info] rPackageID : a", "[Info] rPackageID : b"})));
}

TEST_F(TellahubReset, IsDoneInTheKeysCallbackAndNotOnTheTask) {
  RecordingApp a("a");
  Installer();
  std::thread::id thread;
  a.SetHook([&thread] { thread = std::this_thread::get_id(); });
  SetResetKey(0);
  EXPECT_THAT(Cached("a"), IsNull());
  EXPECT_EQ(thread, std::this_thread::get_id());
  EXPECT_EQ(fake::CallCount("FCTask::Send"), 0u);
}

TEST_F(TellahubReset, OtherValuesDoNothing) {
  RecordingApp a("a");
  Installer();
  for (const int value : {1, -1, 2}) {
    fake::ClearLog();
    SetResetKey(value);
    EXPECT_THAT(fake::LogTexts(),
                ElementsAre("[Debug] VCONFKEY_TELLAHUB_RESET value " + std::to_string(value)));
  }
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(Cached("a"), NotNull());
}

TEST_F(TellahubReset, AnUnreadableKeyIsAnError) {
  RecordingApp a("a");
  Installer();
  fake::Fail("vconf_get_int");
  SetResetKey(0);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] vconf_get_int() failed."));
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(Cached("a"), NotNull());
}

TEST_F(TellahubReset, ReadsTheKeyAndNotTheNode) {
  RecordingApp a("a");
  Installer();
  fake::SetKey(RESET_KEY, 0);
  fake::StoreKey(RESET_KEY, 1);
  fake::DeliverKeyChanges();
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
}

TEST_F(TellahubReset, ARecordThatCannotRunIsRemovedAllTheSame) {
  RecordingApp a("a");
  a.Throw("a is broken");
  Installer();
  SetResetKey(0);
  EXPECT_THAT(fake::LogTexts(6), HasLogTimes("[ERROR] exception : a is broken", 2));
  EXPECT_THAT(Cached("a"), IsNull());
}

TEST_F(TellahubReset, AnExceptionEndsInTheCallback) {
  RecordingApp a("a");
  Installer();
  a.SetReadHook([] { throw std::runtime_error("a has no type"); });
  EXPECT_NO_THROW(SetResetKey(0));
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] exception : a has no type"));
}

class TvSignal : public BoostTest {
 protected:
  void Tune(std::uint64_t service) { fake::FireTvSignalOnThread(103, fake::Payload(service)); }
};

TEST_F(TvSignal, ATuneToABoostingServiceMakesTheFlag) {
  AddBoostingService("true");
  Tune(SERVICE);
  EXPECT_TRUE(Exists(BoostFlag()));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] signalType[103]", "[Info] SIGNAL_TUNE_TO_SERVICEID",
                          "[Info] ch.app.boosting value is true", "[Info] boosting hbbTV App"));
  EXPECT_EQ(fake::CallCount("FCTask::Send"), 0u) << "the work is done in the callback";
}

TEST_F(TvSignal, AFlagThatIsThereIsMadeAgain) {
  AddBoostingService("true");
  support::WriteFile(BoostFlag(), "old");
  Tune(SERVICE);
  EXPECT_EQ(support::ReadFile(BoostFlag()), "");
}

TEST_F(TvSignal, ATuneToAnotherServiceRemovesTheFlag) {
  AddBoostingService("false");
  MakeBoostFlag();
  Tune(SERVICE);
  EXPECT_FALSE(Exists(BoostFlag()));
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Info] signalType[103]", "[Info] SIGNAL_TUNE_TO_SERVICEID",
                  "[Info] ch.app.boosting value is false", "[Info] non boosting hbbTV App"));
}

TEST_F(TvSignal, AFailedLookUpOnATuneRemovesTheFlag) {
  AddBoostingService("true");
  MakeBoostFlag();
  fake::Fail("TVServiceAPI::CreateService");
  Tune(SERVICE);
  EXPECT_FALSE(Exists(BoostFlag()));
}

TEST_F(TvSignal, OnlyTheFirstEightBytesOfATuneAreTheService) {
  AddBoostingService("true");
  std::vector<std::uint8_t> payload = fake::Payload(SERVICE);
  payload.insert(payload.end(), 16, 0xFF);
  fake::FireTvSignal(103, payload);
  EXPECT_TRUE(Exists(BoostFlag()));
}

TEST_F(TvSignal, ATuneWithoutDataIsAnErrorAndRemovesTheFlag) {
  MakeBoostFlag();
  EXPECT_EQ(tvs_signal_callback(103, nullptr, nullptr), 1);
  EXPECT_FALSE(Exists(BoostFlag()));
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Info] signalType[103]", "[Info] SIGNAL_TUNE_TO_SERVICEID",
                  "[ERROR] The tune signal has no service id.", "[Info] non boosting hbbTV App"));
}

TEST_F(TvSignal, FourSignalsRemoveTheFlag) {
  for (const int signal : {25, 135, 170, 2560}) {
    MakeBoostFlag();
    fake::ClearLog();
    EXPECT_EQ(fake::FireTvSignal(signal), 1u);
    EXPECT_FALSE(Exists(BoostFlag())) << signal;
    EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] signalType[" + std::to_string(signal) + "]",
                                              "[Info] non boosting hbbTV App"));
  }
}

TEST_F(TvSignal, RemovingAnAbsentFlagIsNoError) {
  EXPECT_EQ(fake::FireTvSignal(25), 1u);
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
}

TEST_F(TvSignal, ActivationIsPostedToTheTask) {
  EXPECT_EQ(fake::FireTvSignal(75), 1u);
  EXPECT_THAT(fake::CallTexts({"FCTask::Send"}),
              ElementsAre("FCTask::Send(ORVInstaller, 75, false, false) = true"));
  Drain();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] SIGNAL_TVS_ACTIVATE event comming"));
}

TEST_F(TvSignal, AnyOtherSignalIsOnlyLogged) {
  MakeBoostFlag();
  const std::uint64_t data = 0;
  EXPECT_EQ(tvs_signal_callback(104, &data, nullptr), 1);
  EXPECT_TRUE(Exists(BoostFlag()));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] signalType[104]"));
  EXPECT_EQ(fake::CallCount("FCTask::Send"), 0u);
}

TEST_F(TvSignal, EverySignalIsAnsweredWithOne) {
  const std::uint64_t data = 0;
  for (const int signal : {75, 103, 25, 135, 170, 2560, 1}) {
    EXPECT_EQ(tvs_signal_callback(signal, &data, nullptr), 1) << signal;
  }
  Drain();
}

TEST_F(TvSignal, AFlagThatCannotBeMadeEndsInTheCallback) {
  AddBoostingService("true");
  RemoveDataDirectory();
  EXPECT_EQ(tvs_signal_callback(103, fake::Payload(SERVICE).data(), nullptr), 1);
  EXPECT_THAT(fake::LogTexts(6), ElementsAre(testing::StartsWith("[ERROR] exception : ")));
}

TEST_F(TvSignal, FlagsMadeOnTwoThreadsAtOnceAreBothMade) {
  AddBoostingService("true");
  const auto tune = [] {
    const auto payload = fake::Payload(SERVICE);
    for (int i = 0; i < 1000; ++i) {
      tvs_signal_callback(103, payload.data(), nullptr);
    }
  };
  std::thread other(tune);
  tune();
  other.join();
  EXPECT_TRUE(Exists(BoostFlag()));
  EXPECT_FALSE(Exists(BoostFlag() + "_dummy"));
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
}

TEST_F(TvSignal, WithoutADataPathTheFlagIsABareName) {
  AddBoostingService("true");
  MakeBoostFlag();
  support::MakeDirectories("/tmp/here");
  support::WriteFile("/tmp/here/hbb_boost", "");
  std::filesystem::current_path("/tmp/here");
  fake::Fail("app_get_data_path");
  EXPECT_NO_THROW(fake::FireTvSignal(25));
  EXPECT_TRUE(Exists(BoostFlag()));
  EXPECT_FALSE(Exists("/tmp/here/hbb_boost"));
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
}

}  // namespace
