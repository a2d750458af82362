// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/ChFeederCustom.h"

#include <dlog.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include "fake/control/calls.h"
#include "fake/control/channels.h"
#include "fake/control/log.h"
#include "fake/control/mounts.h"
#include "layers.h"
#include "support/files.h"
#include "support/log_matchers.h"
#include "utils/FileSystemUtils.h"

namespace {

using support::HasLog;
using support::HasLogTimes;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// The requests to the scheduler: "1000 package".
std::vector<std::string>& Events() {
  static std::vector<std::string> events;
  return events;
}

void RequestEvent(int eType, void* pParam) {
  Events().push_back(std::to_string(eType) + " " + static_cast<const char*>(pParam));
}

class ChFeederCustomTest : public testing::Test {
 protected:
  ChFeederCustomTest() {
    boost::filesystem::remove_all(FileSystemUtils::GetHbbTvDirectoryPath());
    fake::SetMountHandler([](const fake::Mount& rMount) {
      support::WriteZip(rMount.directory + "/orv_app.zip", {{"a", "x"}});
      return 0;
    });
    Forget();
  }

  void Forget() {
    Events().clear();
    fake::ClearLog();
    fake::ClearCalls();
  }
  void Make(const std::string& rValue, RequestEventCallback pfnRequestEvent = &RequestEvent) {
    m_feeder = layers::Decorate<ChFeederCustom>(layers::NewRecord(), rValue, pfnRequestEvent);
    Forget();
  }

  const std::string m_tree = FileSystemUtils::GetHbbTvDirectoryPath() + layers::PACKAGE;
  const std::string m_addEvent = std::string("1000 ") + layers::PACKAGE;
  const std::string m_deleteEvent = std::string("1001 ") + layers::PACKAGE;
  layers::Chain<ChFeederCustom> m_feeder;
};

TEST_F(ChFeederCustomTest, TheFactoryLogsTheValueAndEntersTheExpirationDate) {
  m_feeder = layers::Decorate<ChFeederCustom>(layers::NewRecord(), "v", &RequestEvent);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rMetadataValue : v"));
  MetadataMap metadata;
  m_feeder->GetAllMetadata(metadata);
  EXPECT_EQ(metadata, (MetadataMap{{"orv_type", {{"ch_feeder_custom", "v"}}},
                                   {"orv_data", {{"expiration_date_str", ""}}}}));
}

TEST_F(ChFeederCustomTest, TheExpirationDateIsSetInForceAndNeverStaged) {
  Make("");
  layers::Apply(*m_feeder, "expiration_date_str", "2030-01-01T00:00:00Z");
  layers::Stage(*m_feeder, "expiration_date_str", "2040-01-01T00:00:00Z");
  m_feeder->UpdateOperation();
  EXPECT_EQ(m_feeder->GetMetadata("orv_data", "expiration_date_str"), "2030-01-01T00:00:00Z");
}

TEST_F(ChFeederCustomTest, TheReleaseOfNullDoesNothing) {
  ChFeederCustom::Release(nullptr);
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(ChFeederCustomTest, ARunOfAnotherValueThanExtendedInstallsNothingAndIsScheduled) {
  Make("basic");
  m_feeder->RunOperation(false);
  EXPECT_THAT(Events(), ElementsAre(m_addEvent));
  EXPECT_THAT(fake::CallNames(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(ChFeederCustomTest, ARunOfAnExtendedAppInstallsAndIsScheduled) {
  Make("extended");
  m_feeder->RunOperation(false);
  EXPECT_EQ(support::ReadFile(m_tree + "/app_type_file.txt"),
            "{\"app_type\":[\"ch_feeder_custom\"]}\n");
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] rPackageID : org.example.pkg, bStarted : 0, "
                                       "rAppType : ch_feeder_custom, rDataType : 1"));
  EXPECT_THAT(Events(), ElementsAre(m_addEvent));
}

TEST_F(ChFeederCustomTest, ARunAtStartPassesThatOnAndIsScheduledToo) {
  Make("extended");
  support::MakeDirectories(m_tree);
  m_feeder->RunOperation(true);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rPackageID : org.example.pkg, bStarted : 1, "
                                            "rAppType : ch_feeder_custom, rDataType : 1"));
  EXPECT_THAT(Events(), ElementsAre(m_addEvent));
}

TEST_F(ChFeederCustomTest, ARunWhoseInstallFailsIsLoggedAndScheduled) {
  Make("extended");
  support::MakeDirectories(m_tree);  // without a list
  m_feeder->RunOperation(false);
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] FileSystemUtils::InstallPackagedData() return false."));
  EXPECT_THAT(Events(), ElementsAre(m_addEvent));
}

TEST_F(ChFeederCustomTest, TheChannelFrameworkNeverHearsOfTheApp) {
  Make("extended");
  m_feeder->RunOperation(false);
  layers::StageValue(*m_feeder, "basic");
  m_feeder->UpdateOperation();
  m_feeder->StopOperation();
  m_feeder.reset();
  EXPECT_THAT(fake::ChannelRequests(), IsEmpty());
  EXPECT_EQ(fake::CallCount("FCAPI::GetOrvAppInfoAPI"), 0u);
}

TEST_F(ChFeederCustomTest, AnUpdateOfTwoEmptyValuesDoesNothing) {
  Make("");
  m_feeder->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] In"));
  EXPECT_THAT(fake::CallNames(), IsEmpty());
  EXPECT_THAT(Events(), IsEmpty());
}

TEST_F(ChFeederCustomTest, AnUpdateToExtendedInstallsAsForANewRun) {
  Make("basic");
  layers::StageValue(*m_feeder, "extended");
  m_feeder->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(),
              support::HasLogsInOrder(
                  support::Texts({"[Info] In", "[Info] FileSystemUtils::InstallPackagedData",
                                  "[Info] rPackageID : org.example.pkg, bStarted : 0, rAppType : "
                                  "ch_feeder_custom, rDataType : 1"})));
  EXPECT_TRUE(support::Exists(m_tree + "/a"));
  EXPECT_EQ(m_feeder->GetMetadata("orv_type", "ch_feeder_custom"), "basic");
  EXPECT_THAT(Events(), IsEmpty());
}

TEST_F(ChFeederCustomTest, AnUpdateWhoseInstallFailsSaysNothingOfIt) {
  Make("basic");
  support::MakeDirectories(m_tree);
  layers::StageValue(*m_feeder, "extended");
  m_feeder->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), IsEmpty());
}

TEST_F(ChFeederCustomTest, AnUpdateOfAnExtendedAppWithNothingStagedUninstalls) {
  Make("extended");
  m_feeder->RunOperation(false);
  Forget();
  m_feeder->UpdateOperation();
  EXPECT_FALSE(support::Exists(m_tree));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] In",
                          "[Info] rPackageID : org.example.pkg, rAppType : ch_feeder_custom, "
                          "rDataType : 1",
                          "[Info] [PACKAGED_TYPE_HBBTV_APP] sTargetDirectory : " + m_tree + "/"));
  EXPECT_THAT(Events(), IsEmpty());
}

TEST_F(ChFeederCustomTest, AnUpdateClearsTheStagedValue) {
  Make("basic");
  layers::StageValue(*m_feeder, "extended");
  m_feeder->UpdateOperation();
  Forget();
  // The cleared value differs from "basic", so the data is removed again.
  m_feeder->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Info] FileSystemUtils::InstallPackagedData")));
  EXPECT_FALSE(support::Exists(m_tree));
}

TEST_F(ChFeederCustomTest, AnUpdateToTheValueInForceKeepsItStaged) {
  Make("extended");
  layers::StageValue(*m_feeder, "extended");
  m_feeder->UpdateOperation();
  m_feeder->UpdateOperation();
  // Had it been cleared, the second update would have uninstalled.
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] In", "[Info] In"));
}

TEST_F(ChFeederCustomTest, TheValueInForceStaysSoAnUpdateBackIsTakenForNoChange) {
  Make("extended");
  m_feeder->RunOperation(false);
  layers::StageValue(*m_feeder, "basic");
  m_feeder->UpdateOperation();
  EXPECT_FALSE(support::Exists(m_tree));
  layers::StageValue(*m_feeder, "extended");
  m_feeder->UpdateOperation();
  EXPECT_FALSE(support::Exists(m_tree));
  EXPECT_EQ(fake::CallCount("PS_Mount"), 1u);
  layers::StageValue(*m_feeder, "third");
  Forget();
  m_feeder->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] rPackageID : org.example.pkg, rAppType : "
                                       "ch_feeder_custom, rDataType : 1"));
}

TEST_F(ChFeederCustomTest, AStopTellsTheSchedulerAndLeavesThePackagedData) {
  Make("extended");
  m_feeder->RunOperation(false);
  Forget();
  m_feeder->StopOperation();
  EXPECT_THAT(Events(), ElementsAre(m_deleteEvent));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] In"));
  EXPECT_TRUE(support::Exists(m_tree + "/a"));
}

TEST_F(ChFeederCustomTest, StopAndReleaseTellTheSchedulerTwice) {
  Make("basic");
  m_feeder->StopOperation();
  m_feeder.reset();
  EXPECT_THAT(Events(), ElementsAre(m_deleteEvent, m_deleteEvent));
}

TEST_F(ChFeederCustomTest, TheReleaseOfAnExtendedAppUninstalls) {
  Make("extended");
  m_feeder->RunOperation(false);
  m_feeder.reset();
  EXPECT_FALSE(support::Exists(m_tree));
}

TEST_F(ChFeederCustomTest, TheReleaseOfAnotherAppLeavesTheTree) {
  Make("basic");
  support::MakeDirectories(m_tree);
  m_feeder.reset();
  EXPECT_TRUE(support::Exists(m_tree));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(ChFeederCustomTest, AReleaseWhoseDataRemovalThrowsIsLogged) {
  Make("extended");
  support::WriteFile(m_tree + "/app_type_file.txt", "[1]");
  m_feeder.reset();
  EXPECT_THAT(Events(), ElementsAre(m_deleteEvent));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] exception : in Json::Value::resolveReference(key, end): "
                          "requires objectValue"));
}

TEST_F(ChFeederCustomTest, WithoutACallbackTheSchedulerIsNeverCalledAndAllElseIsTheSame) {
  Make("extended", nullptr);
  m_feeder->RunOperation(false);
  EXPECT_TRUE(support::Exists(m_tree + "/a"));
  m_feeder->StopOperation();
  EXPECT_THAT(fake::LogTexts(), HasLogTimes("[Info] In", 1));
  m_feeder.reset();
  EXPECT_FALSE(support::Exists(m_tree));
  EXPECT_THAT(Events(), IsEmpty());
}

}  // namespace
