// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <thread>

#include "controller/ORVScheduler.h"
#include "framework/events.h"
#include "support/drain.h"
#include "unit/app_info/records.h"
#include "unit/controller/allocations.h"
#include "unit/controller/installer_fixture.h"

namespace {

using support::HasLog;
using support::HasLogsInOrder;
using support::HasLogTimes;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNull;
using testing::Not;
using testing::NotNull;

const char PREFIX[] = ORV_METADATA_PREFIX;
const char RESET_KEY[] = "db/tellahub/reset/apps";

/// A package that is a channel-bound app of one type, with a UI app that the web-app service knows.
fake::Package ChannelApp(const std::string& id, const std::string& value = "x") {
  fake::App ui;
  ui.id = id + ".ui";
  ui.metadata = {{std::string(PREFIX) + "orv_type/ch_feeder_custom", value}};
  fake::Package package;
  package.id = id;
  package.apps = {ui};
  return package;
}

AppInfo* Cached(const std::string& package) {
  return AppInfoCache::GetInstance()->GetAppInfo(package);
}

class ORVInstallerEvents : public InstallerTest {
 protected:
  // The runs of service apps post to the scheduler, whose thread must not work while the process
  // ends.
  void TearDown() override { support::Drain(*ORVScheduler::GetInstance()); }
};

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

TEST_F(ORVInstallerEvents, AnInstallMakesARecordAndRunsIt) {
  fake::AddPackage(ChannelApp("p"));
  fake::AddWasApp({"p", "p.ui", "widget-p", 2, 0});
  EXPECT_TRUE(HandlePackageEvent(1000, "p"));
  ASSERT_THAT(Cached("p"), NotNull());
  EXPECT_EQ(Cached("p")->m_sWidgetID, "widget-p");
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] pEvent : 1000", "[Info] rPackageID : p, eType : 0",
                                    "[Info] EventType : 1000"})));
}

TEST_F(ORVInstallerEvents, AnInstallOfAnOrdinaryPackageIsADebugLine) {
  fake::Package package;
  package.id = "plain";
  fake::AddPackage(package);
  EXPECT_TRUE(HandlePackageEvent(1000, "plain"));
  EXPECT_THAT(Cached("plain"), IsNull());
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] ORVAppCreator::CreateApp() return false."));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Info] rPackageID : plain, eType : 0")));
}

TEST_F(ORVInstallerEvents, AnInstallBeforeTheWebAppServiceKnowsWaits) {
  fake::AddPackage(ChannelApp("p"));
  EXPECT_TRUE(HandlePackageEvent(1000, "p"));
  ASSERT_THAT(Cached("p"), NotNull());
  EXPECT_EQ(fake::KeySubscriptions("memory/was/app_install"), 1u);
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Info] EventType : 1000")));
  fake::SetKey("memory/was/app_install", "widget-p");
  fake::DeliverKeyChanges();
  EXPECT_EQ(Cached("p")->m_sWidgetID, "widget-p");
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] EventType : 1000"));
}

TEST_F(ORVInstallerEvents, AnUpdateOfAnUnknownPackageIsAnInstall) {
  fake::AddPackage(ChannelApp("p"));
  fake::AddWasApp({"p", "p.ui", "widget-p", 2, 0});
  EXPECT_TRUE(HandlePackageEvent(1001, "p"));
  ASSERT_THAT(Cached("p"), NotNull());
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] rPackageID : p, eType : 0"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] EventType : 1000"));
}

TEST_F(ORVInstallerEvents, AnUpdateThatMakesNoAppLogsAsAnInstallDoes) {
  fake::Package package;
  package.id = "plain";
  fake::AddPackage(package);
  EXPECT_TRUE(HandlePackageEvent(1001, "plain"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] ORVAppCreator::CreateApp() return false."));
}

TEST_F(ORVInstallerEvents, AnUpdateRunsTheOperationAndThenWritesTheRecordAgain) {
  fake::AddPackage(ChannelApp("p"));
  RecordingApp app("p", "");
  app.Put("orv_type", "ch_feeder_custom", "x");
  Installer();
  AppInfoCache::GetInstance()->AddAppInfo("p", &app, true);
  app.SetHook([&app] {
    if (RecordingApp::Operations().back() == "p.update") {
      app.m_sVersion = "of the operation";
    }
  });
  EXPECT_TRUE(HandlePackageEvent(1001, "p"));
  EXPECT_THAT(RecordingApp::Operations(),
              ElementsAre("p.set(orv_type,ch_feeder_custom,x,true)", "p.update"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] rPackageID : p, eType : 1"));
  AppInfoDB::RowMap rows;
  ASSERT_TRUE(AppInfoCache::GetInstance()->LoadData(rows));
  EXPECT_EQ(rows["p"]["version"], "of the operation");
}

TEST_F(ORVInstallerEvents, ARecordThatIsGoneAfterTheUpdateIsNotWritten) {
  fake::AddPackage(ChannelApp("p"));
  RecordingApp app("p");
  app.Put("orv_type", "ch_feeder_custom", "x");
  Installer();
  app.SetHook([] {
    if (RecordingApp::Operations().back() == "p.update") {
      AppInfoCache::GetInstance()->RemoveAppInfo("p");
    }
  });
  EXPECT_TRUE(HandlePackageEvent(1001, "p"));
  EXPECT_THAT(Cached("p"), IsNull());
  AppInfoDB::RowMap rows;
  ASSERT_TRUE(AppInfoCache::GetInstance()->LoadData(rows));
  EXPECT_EQ(rows.count("p"), 0u);
}

TEST_F(ORVInstallerEvents, AnUpdateThatLosesItsTypesStopsAndRemoves) {
  fake::Package package;
  package.id = "p";
  fake::AddPackage(package);
  RecordingApp app("p", "");
  Installer();
  EXPECT_TRUE(HandlePackageEvent(1001, "p"));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("p.stop"));
  EXPECT_THAT(Cached("p"), IsNull());
}

TEST_F(ORVInstallerEvents, AFailedUpdateIsADebugLine) {
  RecordingApp app("p");  // the package manager knows no such package
  Installer();
  EXPECT_TRUE(HandlePackageEvent(1001, "p"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] ORVAppCreator::UpdateApp() return false."));
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(Cached("p"), NotNull());
}

TEST_F(ORVInstallerEvents, AnUninstallStopsTheRecordAndThenRemovesIt) {
  RecordingApp app("p", "");
  Installer();
  bool cachedWhileStopped = false;
  app.SetHook([&] { cachedWhileStopped = Cached("p") == &app; });
  EXPECT_TRUE(HandlePackageEvent(1002, "p"));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("p.stop"));
  EXPECT_TRUE(cachedWhileStopped);
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] pEvent : 1002", "[Info] packageID : p",
                                    "[Info] rPackageID : p, eType : 2", "[Info] rPackageID : p"})));
  EXPECT_THAT(Cached("p"), IsNull());
}

TEST_F(ORVInstallerEvents, AnUninstallOfAnUnknownPackageIsHarmless) {
  EXPECT_TRUE(HandlePackageEvent(1002, "p"));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] pEvent : 1002", "[Info] packageID : p",
                          "[Info] rPackageID : p, eType : 2", "[Debug] Cannot find target AppInfo.",
                          "[Debug] Cannot find target App(rPackageID : p)", "[Info] rPackageID : p",
                          "[ERROR] Cannot find target AppInfo."));
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
  EXPECT_THAT(Cached("p"), IsNull());
}

TEST_F(ORVInstallerEvents, AStopThatThrowsDoesNotKeepAnUninstalledRecord) {
  RecordingApp app("p");
  Installer();
  AppInfoCache::GetInstance()->AddAppInfo("p", &app, true);
  app.Throw("p cannot stop");
  EXPECT_TRUE(HandlePackageEvent(1002, "p"));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : p cannot stop"));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("p.stop"));
  EXPECT_THAT(Cached("p"), IsNull());
  EXPECT_THAT(records::StoredPackages(), IsEmpty());
}

TEST_F(ORVInstallerEvents, AStopThatThrowsDoesNotKeepARecordThatLostItsTypes) {
  fake::Package package;
  package.id = "p";
  fake::AddPackage(package);
  RecordingApp app("p");
  Installer();
  AppInfoCache::GetInstance()->AddAppInfo("p", &app, true);
  app.Throw("p cannot stop");
  EXPECT_TRUE(HandlePackageEvent(1001, "p"));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : p cannot stop"));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("p.stop"));
  EXPECT_THAT(Cached("p"), IsNull());
  EXPECT_THAT(records::StoredPackages(), IsEmpty());
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

}  // namespace
