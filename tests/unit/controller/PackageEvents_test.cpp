// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/PackageEvents.h"

#include "controller/ORVScheduler.h"
#include "support/drain.h"
#include "unit/app_info/records.h"
#include "unit/controller/channel_app.h"
#include "unit/controller/installer_fixture.h"

namespace {

using support::HasLog;
using support::HasLogsInOrder;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsNull;
using testing::Not;
using testing::NotNull;

AppInfo* Cached(const std::string& package) {
  return AppInfoCache::GetInstance()->GetAppInfo(package);
}

class PackageEventsTest : public InstallerTest {
 protected:
  // The runs of service apps post to the scheduler, whose thread must not work while the process
  // ends.
  void TearDown() override { support::Drain(*ORVScheduler::GetInstance()); }
};

TEST_F(PackageEventsTest, AnInstallMakesARecordAndRunsIt) {
  fake::AddPackage(ChannelApp("p"));
  fake::AddWasApp({"p", "p.ui", "widget-p", 2, 0});
  EXPECT_TRUE(HandlePackageEvent(1000, "p"));
  ASSERT_THAT(Cached("p"), NotNull());
  EXPECT_EQ(Cached("p")->m_sWidgetID, "widget-p");
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] pEvent : 1000", "[Info] rPackageID : p, eType : 0",
                                    "[Info] EventType : 1000"})));
}

TEST_F(PackageEventsTest, AnInstallOfAnOrdinaryPackageIsADebugLine) {
  fake::Package package;
  package.id = "plain";
  fake::AddPackage(package);
  EXPECT_TRUE(HandlePackageEvent(1000, "plain"));
  EXPECT_THAT(Cached("plain"), IsNull());
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] ORVAppCreator::CreateApp() return false."));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Info] rPackageID : plain, eType : 0")));
}

TEST_F(PackageEventsTest, AnInstallBeforeTheWebAppServiceKnowsWaits) {
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

TEST_F(PackageEventsTest, AnUpdateOfAnUnknownPackageIsAnInstall) {
  fake::AddPackage(ChannelApp("p"));
  fake::AddWasApp({"p", "p.ui", "widget-p", 2, 0});
  EXPECT_TRUE(HandlePackageEvent(1001, "p"));
  ASSERT_THAT(Cached("p"), NotNull());
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] rPackageID : p, eType : 0"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] EventType : 1000"));
}

TEST_F(PackageEventsTest, AnUpdateThatMakesNoAppLogsAsAnInstallDoes) {
  fake::Package package;
  package.id = "plain";
  fake::AddPackage(package);
  EXPECT_TRUE(HandlePackageEvent(1001, "plain"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] ORVAppCreator::CreateApp() return false."));
}

TEST_F(PackageEventsTest, AnUpdateRunsTheOperationAndThenWritesTheRecordAgain) {
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

TEST_F(PackageEventsTest, ARecordThatIsGoneAfterTheUpdateIsNotWritten) {
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

TEST_F(PackageEventsTest, AnUpdateThatLosesItsTypesStopsAndRemoves) {
  fake::Package package;
  package.id = "p";
  fake::AddPackage(package);
  RecordingApp app("p", "");
  Installer();
  EXPECT_TRUE(HandlePackageEvent(1001, "p"));
  EXPECT_THAT(RecordingApp::Operations(), ElementsAre("p.stop"));
  EXPECT_THAT(Cached("p"), IsNull());
}

TEST_F(PackageEventsTest, AFailedUpdateIsADebugLine) {
  RecordingApp app("p");  // the package manager knows no such package
  Installer();
  EXPECT_TRUE(HandlePackageEvent(1001, "p"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] ORVAppCreator::UpdateApp() return false."));
  EXPECT_THAT(RecordingApp::Operations(), IsEmpty());
  EXPECT_THAT(Cached("p"), NotNull());
}

TEST_F(PackageEventsTest, AnUninstallStopsTheRecordAndThenRemovesIt) {
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

TEST_F(PackageEventsTest, AnUninstallOfAnUnknownPackageIsHarmless) {
  EXPECT_TRUE(HandlePackageEvent(1002, "p"));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] pEvent : 1002", "[Info] packageID : p",
                          "[Info] rPackageID : p, eType : 2", "[Debug] Cannot find target AppInfo.",
                          "[Debug] Cannot find target App(rPackageID : p)", "[Info] rPackageID : p",
                          "[ERROR] Cannot find target AppInfo."));
}

TEST_F(PackageEventsTest, AStopThatThrowsDoesNotKeepAnUninstalledRecord) {
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

TEST_F(PackageEventsTest, AStopThatThrowsDoesNotKeepARecordThatLostItsTypes) {
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

}  // namespace
