// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/ChFeederStandard.h"

#include <dlog.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <stdexcept>

#include "app_info/app_type/ChFeederCustom.h"
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
using support::HasLogsInOrder;
using support::HasLogTimes;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class ChFeederStandardTest : public testing::Test {
 protected:
  ChFeederStandardTest() {
    boost::filesystem::remove_all(FileSystemUtils::GetHbbTvDirectoryPath());
    boost::filesystem::remove_all(FileSystemUtils::GetMetaDataDirectoryPath());
    Forget();
  }

  void Forget() {
    fake::ClearLog();
    fake::ClearCalls();
    fake::ClearChannelRequests();
  }
  /// A new layer with these URLs in force.
  void Make(const std::string& rValue, const std::string& rChannelURL = "",
            const std::string& rScheduleURL = "") {
    m_feeder = layers::Decorate<ChFeederStandard>(rValue);
    layers::Apply(*m_feeder, "channel_data_url", rChannelURL);
    layers::Apply(*m_feeder, "schedule_data_url", rScheduleURL);
    Forget();
  }
  void StageURLs(const std::string& rChannelURL, const std::string& rScheduleURL) {
    layers::Stage(*m_feeder, "channel_data_url", rChannelURL);
    layers::Stage(*m_feeder, "schedule_data_url", rScheduleURL);
  }
  void PutIntoImage(const std::vector<support::ZipEntry>& rEntries) {
    fake::SetMountHandler([rEntries](const fake::Mount& rMount) {
      support::WriteZip(rMount.directory + "/orv_app.zip", rEntries);
      return 0;
    });
  }
  std::string AppliedURL(const std::string& rWhich) {
    return m_feeder->GetMetadata("orv_data", rWhich + "_data_url");
  }
  static std::string Record(const std::string& rChannelURL, const std::string& rScheduleURL) {
    return "{\"channel_data_url\":\"" + rChannelURL +
           "\",\"pkg_id\":\"org.example.pkg\",\"schedule_data_url\":\"" + rScheduleURL +
           "\",\"widget_id\":\"AbCdEfGhIj.widget\"}\n";
  }
  std::vector<std::string> Requests() {
    std::vector<std::string> requests;
    for (const fake::ChannelRequest& rRequest : fake::ChannelRequests()) {
      requests.push_back(rRequest.operation + " " + rRequest.record);
    }
    return requests;
  }
  std::vector<std::string> Errors() { return fake::LogTexts(DLOG_ERROR); }

  const std::string m_directory = FileSystemUtils::GetMetaDataDirectoryPath() + layers::PACKAGE;
  const std::string m_tree = FileSystemUtils::GetHbbTvDirectoryPath() + layers::PACKAGE;
  const std::string m_removeRecord = "{\"pkg_id\":\"org.example.pkg\"}\n";
  layers::Chain<ChFeederStandard> m_feeder;
};

TEST_F(ChFeederStandardTest, TheFactoryLogsTheValueAndEntersThreeEmptyKeys) {
  m_feeder = layers::Decorate<ChFeederStandard>("some value");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rMetadataValue : some value"));
  EXPECT_EQ(m_feeder->GetAppType(), "ch_feeder_standard");
  EXPECT_EQ(m_feeder->m_sPackageID, layers::PACKAGE);
  EXPECT_EQ(m_feeder->m_sWidgetID, layers::WIDGET);
  MetadataMap metadata;
  m_feeder->GetAllMetadata(metadata);
  EXPECT_EQ(metadata,
            (MetadataMap{
                {"orv_type", {{"ch_feeder_standard", "some value"}}},
                {"orv_data",
                 {{"ch.app.boosting", ""}, {"channel_data_url", ""}, {"schedule_data_url", ""}}}}));
}

TEST_F(ChFeederStandardTest, TheReleaseOfNullDoesNothing) {
  ChFeederStandard::Release(nullptr);
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(ChFeederStandardTest, AURLWithoutAColonHasNoProtocol) {
  EXPECT_EQ(ChFeederStandard::ParseInputMetaDataProtocol("channel.json"),
            METADATA_PROTOCOL_INVALID);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] sInputMetaDataURL channel.json",
                                            "[ERROR] Invalid MetaData URL - No Colon"));
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] Invalid MetaData URL - No Colon"));
}

TEST_F(ChFeederStandardTest, AnEmptyURLHasNoColonEither) {
  EXPECT_EQ(ChFeederStandard::ParseInputMetaDataProtocol(""), METADATA_PROTOCOL_INVALID);
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] sInputMetaDataURL ", "[ERROR] Invalid MetaData URL - No Colon"));
}

TEST_F(ChFeederStandardTest, TheThreeSchemesAreKnown) {
  EXPECT_EQ(ChFeederStandard::ParseInputMetaDataProtocol("file://a"), METADATA_PROTOCOL_FILE);
  EXPECT_EQ(ChFeederStandard::ParseInputMetaDataProtocol("http://a:80/"), METADATA_PROTOCOL_HTTP);
  EXPECT_EQ(ChFeederStandard::ParseInputMetaDataProtocol("https://a"), METADATA_PROTOCOL_HTTP);
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] sInputMetaDataURL file://a", "[Info] metaDataProtocol file",
                          "[Info] sInputMetaDataURL http://a:80/", "[Info] metaDataProtocol http",
                          "[Info] sInputMetaDataURL https://a", "[Info] metaDataProtocol https"));
}

TEST_F(ChFeederStandardTest, ASchemeInCapitalsIsUnknown) {
  EXPECT_EQ(ChFeederStandard::ParseInputMetaDataProtocol("FILE://a"), METADATA_PROTOCOL_INVALID);
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] sInputMetaDataURL FILE://a", "[Info] metaDataProtocol FILE",
                          "[ERROR] Protocol is not defined"));
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] Protocol is not defined"));
}

TEST_F(ChFeederStandardTest, AnEmptySchemeIsUnknown) {
  EXPECT_EQ(ChFeederStandard::ParseInputMetaDataProtocol(":file"), METADATA_PROTOCOL_INVALID);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] metaDataProtocol "));
}

TEST_F(ChFeederStandardTest, TheMaskIsZeroForEmptyURLsAndAnotherValueThanExtended) {
  Make("Extended");
  EXPECT_EQ(m_feeder->GetPackagedDataType(false), 0);
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Info] GetPackagedDataType bUpdatable:0", "[Info] sInputMetaDataURL ",
                  "[ERROR] Invalid MetaData URL - No Colon", "[Info] sInputMetaDataURL ",
                  "[ERROR] Invalid MetaData URL - No Colon", "[Info] PackagedDataType : 0"));
}

TEST_F(ChFeederStandardTest, TheValueExtendedSetsTheFirstBit) {
  Make("extended", "http://c", "http://s");
  EXPECT_EQ(m_feeder->GetPackagedDataType(false), 1);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] PackagedDataType : 1"));
}

TEST_F(ChFeederStandardTest, AFileURLOfTheChannelsAloneSetsTheSecondBit) {
  Make("", "file://c", "file://s");
  EXPECT_EQ(m_feeder->GetPackagedDataType(false), 2);
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Info] GetPackagedDataType bUpdatable:0", "[Info] sInputMetaDataURL file://c",
                  "[Info] metaDataProtocol file", "[Info] PackagedDataType : 2"));
}

TEST_F(ChFeederStandardTest, AFileURLOfTheScheduleSetsTheSecondBitToo) {
  Make("extended", "https://c", "file://s");
  EXPECT_EQ(m_feeder->GetPackagedDataType(false), 3);
}

TEST_F(ChFeederStandardTest, TheMaskOfTheStagedSideLooksOnlyThere) {
  Make("extended", "file://c", "file://s");
  EXPECT_EQ(m_feeder->GetPackagedDataType(true), 0);
  layers::StageValue(*m_feeder, "extended");
  StageURLs("http://c", "http://s");
  EXPECT_EQ(m_feeder->GetPackagedDataType(true), 1);
  StageURLs("http://c", "file://s");
  EXPECT_EQ(m_feeder->GetPackagedDataType(true), 3);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] GetPackagedDataType bUpdatable:1"));
}

TEST_F(ChFeederStandardTest, ARunWithEmptyURLsCreatesTheRecordWithTwoEmptyTexts) {
  Make("basic");
  m_feeder->RunOperation(false);
  EXPECT_THAT(Requests(), ElementsAre("CreateAppInfo " + Record("", "")));
  EXPECT_EQ(fake::CallCount("PS_Mount"), 0u);
  EXPECT_FALSE(support::Exists(m_tree));
}

TEST_F(ChFeederStandardTest, URLsWithRemovedKeysAreCreatedAgainAndEmpty) {
  Make("basic", "http://c", "http://s");
  m_feeder->RemoveMetadata("schedule_data_url", "channel_data_url");
  m_feeder->RemoveMetadata("schedule_data_url", "schedule_data_url");
  m_feeder->RunOperation(false);
  EXPECT_THAT(Requests(), ElementsAre("CreateAppInfo " + Record("", "")));
  MetadataMap metadata;
  m_feeder->GetAllMetadata(metadata);
  EXPECT_EQ(metadata["orv_data"],
            (std::map<std::string, std::string>{
                {"ch.app.boosting", ""}, {"channel_data_url", ""}, {"schedule_data_url", ""}}));
}

TEST_F(ChFeederStandardTest, TheBoostMarkIsNeverSentToTheFramework) {
  Make("basic", "http://c", "http://s");
  layers::Apply(*m_feeder, "ch.app.boosting", "1");
  layers::Stage(*m_feeder, "ch.app.boosting", "2");
  StageURLs("http://c2", "http://s2");
  m_feeder->RunOperation(false);
  m_feeder->UpdateOperation();
  m_feeder->StopOperation();
  EXPECT_EQ(m_feeder->GetMetadata("orv_data", "ch.app.boosting"), "1");
  EXPECT_THAT(Requests(), ElementsAre("CreateAppInfo " + Record("http://c", "http://s"),
                                      "UpdateAppInfo " + Record("http://c2", "http://s2"),
                                      "RemoveAppInfo " + m_removeRecord));
}

TEST_F(ChFeederStandardTest, URLsThatAreNoFilesAreSentUnchanged) {
  Make("basic", "https://example.org/c?a=1&b=\\\"x", "no-colon");
  m_feeder->RunOperation(false);
  EXPECT_THAT(Requests(), ElementsAre("CreateAppInfo " +
                                      Record("https://example.org/c?a=1&b=\\\\\\\"x", "no-colon")));
  EXPECT_EQ(fake::CallCount("PS_Mount"), 0u);
}

TEST_F(ChFeederStandardTest, ARunOfAnExtendedAppInstallsItsData) {
  Make("extended", "http://c", "http://s");
  PutIntoImage({{"index.html", "x"}, {"metadata/c.json", "c"}});
  m_feeder->RunOperation(false);
  EXPECT_EQ(support::ReadFile(m_tree + "/app_type_file.txt"),
            "{\"app_type\":[\"ch_feeder_standard\"]}\n");
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] rPackageID : org.example.pkg, bStarted : 0, "
                                       "rAppType : ch_feeder_standard, rDataType : 1"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] sTargetFilePath : /opt/usr/apps/org.example.pkg/res/"
                                       "AbCdEfGhIj.widget.tmg, sMountedDir : " +
                                       FileSystemUtils::GetHbbTvDirectoryPath() + "temp_app"));
  EXPECT_THAT(Requests(), ElementsAre("CreateAppInfo " + Record("http://c", "http://s")));
  EXPECT_FALSE(support::Exists(m_directory));
}

TEST_F(ChFeederStandardTest, WithoutAFileURLTheURLsStayWhereOldMetadataLies) {
  Make("extended", "http://c", "http://s");
  support::MakeDirectories(m_directory);
  PutIntoImage({{"index.html", "x"}});
  m_feeder->RunOperation(false);
  EXPECT_THAT(Requests(), ElementsAre("CreateAppInfo " + Record("http://c", "http://s")));
}

TEST_F(ChFeederStandardTest, ARunPointsFileURLsAtTheInstalledMetadata) {
  Make("basic", "file://channel.json", "file://schedule.json");
  PutIntoImage({{"metadata/channel.json", "c"}, {"metadata/schedule.json", "s"}});
  m_feeder->RunOperation(false);
  const std::string sChannelURL = "file:/" + m_directory + "/channel.json";
  const std::string sScheduleURL = "file:/" + m_directory + "/schedule.json";
  EXPECT_THAT(Requests(), ElementsAre("CreateAppInfo " + Record(sChannelURL, sScheduleURL)));
  EXPECT_EQ(AppliedURL("channel"), sChannelURL);
  EXPECT_EQ(AppliedURL("schedule"), sScheduleURL);
  EXPECT_THAT(
      fake::LogTexts(),
      HasLogsInOrder(Texts({"[Info] SetMetaDataDataList bUpdatable:0",
                            "[Info] sTargetMetaDataDirectoryPath : " + m_directory,
                            "[Info] refTargetDataList[CHANNEL_DATA_URL] : " + sChannelURL,
                            "[Info] refTargetDataList[SCHEDULE_DATA_URL] : " + sScheduleURL})));
}

TEST_F(ChFeederStandardTest, AWebURLBesideAFileURLGetsTheDirectoryToo) {
  Make("basic", "https://example.org/c", "file://s");
  PutIntoImage({{"metadata/s", "s"}});
  m_feeder->RunOperation(false);
  EXPECT_THAT(Requests(),
              ElementsAre("CreateAppInfo " + Record("https:" + m_directory + "//example.org/c",
                                                    "file:/" + m_directory + "/s")));
}

TEST_F(ChFeederStandardTest, AnEmptyScheduleThrowsAfterTheChannelsWereRewritten) {
  Make("basic", "file://c", "");
  PutIntoImage({{"metadata/c", "c"}});
  try {
    m_feeder->RunOperation(false);
    FAIL() << "nothing was thrown";
  } catch (const std::out_of_range& e) {
    EXPECT_THAT(e.what(), testing::HasSubstr("basic_string::replace"));
  }
  EXPECT_EQ(AppliedURL("channel"), "file:/" + m_directory + "/c");
  EXPECT_EQ(AppliedURL("schedule"), "");
  EXPECT_THAT(Requests(), IsEmpty());
  EXPECT_THAT(Errors(),
              Not(HasLog("[ERROR] FileSystemUtils::installPackagedData() return false.")));
}

TEST_F(ChFeederStandardTest, AShortChannelURLThrowsBeforeAnythingIsRewritten) {
  Make("basic", "ab:cd", "file://s");
  PutIntoImage({{"metadata/s", "s"}});
  EXPECT_THROW(m_feeder->RunOperation(true), std::out_of_range);
  EXPECT_EQ(AppliedURL("channel"), "ab:cd");
  EXPECT_EQ(AppliedURL("schedule"), "file://s");
}

TEST_F(ChFeederStandardTest, AURLOfSixCharactersIsLongEnough) {
  Make("basic", "file:/", "http:/");
  PutIntoImage({{"metadata/c", "c"}});
  m_feeder->RunOperation(false);
  EXPECT_EQ(AppliedURL("channel"), "file:/" + m_directory);
  EXPECT_EQ(AppliedURL("schedule"), "http:/" + m_directory);
}

TEST_F(ChFeederStandardTest, ASecondRunPutsTheDirectoryInAgain) {
  Make("basic", "file://c", "file://s");
  PutIntoImage({{"metadata/c", "c"}, {"metadata/s", "s"}});
  m_feeder->RunOperation(true);
  m_feeder->RunOperation(true);
  EXPECT_EQ(AppliedURL("channel"), "file:/" + m_directory + m_directory + "/c");
}

TEST_F(ChFeederStandardTest, ARunOfAKnownAppRewritesTheURLsAndAsksTheFrameworkNothing) {
  Make("basic", "file://c", "file://s");
  support::MakeDirectories(m_directory);
  support::MakeDirectories(m_tree);
  fake::SetChannelFrameworkPresent(false);
  m_feeder->RunOperation(true);
  EXPECT_EQ(AppliedURL("channel"), "file:/" + m_directory + "/c");
  EXPECT_EQ(fake::CallCount("FCAPI::GetOrvAppInfoAPI"), 0u);
  EXPECT_THAT(Errors(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] rPackageID : org.example.pkg, bStarted : 1, "
                                       "rAppType : ch_feeder_standard, rDataType : 2"));
}

TEST_F(ChFeederStandardTest, AFailedInstallIsLoggedAndTheRecordGoesOutWithItsFileURLs) {
  Make("basic", "file://c", "file://s");
  fake::SetMountHandler([](const fake::Mount&) { return 1; });
  m_feeder->RunOperation(false);
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[ERROR] Cannot find target zip file.",
                                    "[ERROR] FileSystemUtils::installPackagedData() return false.",
                                    "[Info] SetMetaDataDataList bUpdatable:0",
                                    "[Info] sTargetMetaDataDirectoryPath : " + m_directory,
                                    "[ERROR] boostfs::exists(" + m_directory + ") return false.",
                                    "[ERROR] Invalid PackagedMetaDataDirectoryPath : "})));
  EXPECT_THAT(Requests(), ElementsAre("CreateAppInfo " + Record("file://c", "file://s")));
}

TEST_F(ChFeederStandardTest, AFailedInstallWithOldMetadataStillPointsTheURLsThere) {
  Make("basic", "file://c", "file://s");
  support::MakeDirectories(m_directory);
  fake::SetMountHandler([](const fake::Mount&) { return 1; });
  m_feeder->RunOperation(false);
  EXPECT_EQ(AppliedURL("channel"), "file:/" + m_directory + "/c");
}

TEST_F(ChFeederStandardTest, WithoutTheFrameworkARunLogsAndGoesOn) {
  Make("basic", "http://c", "http://s");
  fake::SetChannelFrameworkPresent(false);
  m_feeder->RunOperation(false);
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] GetOrvAppInfoAPI() return NULL."));
  EXPECT_EQ(fake::LogTexts().back(), "[Debug] AddChannelUsingKelvoApi() return false");
}

TEST_F(ChFeederStandardTest, ARecordThatTheFrameworkRefusesIsLoggedAndNotTriedAgain) {
  Make("basic", "http://c", "http://s");
  fake::Fail("FCOrvAppInfoAPI::CreateAppInfo", 0);
  m_feeder->RunOperation(false);
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] FCOrvAppInfoAPI::CreateAppInfo() return false."));
  EXPECT_EQ(fake::LogTexts().back(), "[Debug] AddChannelUsingKelvoApi() return false");
  EXPECT_EQ(fake::CallCount("FCOrvAppInfoAPI::CreateAppInfo"), 1u);
  EXPECT_THAT(fake::Channels(), IsEmpty());
}

TEST_F(ChFeederStandardTest, EachRequestFetchesTheInterfaceAgain) {
  Make("basic", "http://c", "http://s");
  EXPECT_TRUE(m_feeder->AddChannelUsingKelvoApi());
  EXPECT_TRUE(m_feeder->UpdateChannelUsingKelvoApi());
  EXPECT_TRUE(m_feeder->RemoveChannelUsingKelvoApi());
  EXPECT_THAT(fake::CallNames(),
              ElementsAre("FCAPI::GetOrvAppInfoAPI", "FCOrvAppInfoAPI::CreateAppInfo",
                          "FCAPI::GetOrvAppInfoAPI", "FCOrvAppInfoAPI::UpdateAppInfo",
                          "FCAPI::GetOrvAppInfoAPI", "FCOrvAppInfoAPI::RemoveAppInfo"));
}

TEST_F(ChFeederStandardTest, AnUpdateSendsTheStagedURLsAndClearsThem) {
  Make("basic", "http://old/c", "http://old/s");
  m_feeder->RunOperation(false);
  layers::StageValue(*m_feeder, "other");
  StageURLs("http://new/c", "http://new/s");
  Forget();
  m_feeder->UpdateOperation();
  EXPECT_EQ(fake::LogTexts().front(),
            "[Debug] Applied Metadata : basic, Updatable Metadata : other");
  EXPECT_THAT(Requests(), ElementsAre("UpdateAppInfo " + Record("http://new/c", "http://new/s")));
  EXPECT_EQ(AppliedURL("channel"), "http://old/c");
  EXPECT_EQ(m_feeder->GetMetadata("orv_type", "ch_feeder_standard"), "basic");

  Forget();
  m_feeder->UpdateOperation();
  EXPECT_EQ(fake::LogTexts().front(), "[Debug] Applied Metadata : basic, Updatable Metadata : ");
  EXPECT_THAT(Requests(), ElementsAre("UpdateAppInfo " + Record("", "")));
}

TEST_F(ChFeederStandardTest, AnUpdateRemovesTheOldDataAndInstallsTheNew) {
  Make("extended", "http://c", "http://s");
  PutIntoImage({{"version", "1"}});
  m_feeder->RunOperation(false);
  ASSERT_EQ(support::ReadFile(m_tree + "/version"), "1");
  PutIntoImage({{"version", "2"}, {"metadata/c", "c"}, {"metadata/s", "s"}});
  layers::StageValue(*m_feeder, "extended");
  StageURLs("file://c", "file://s");
  Forget();
  m_feeder->UpdateOperation();
  EXPECT_EQ(support::ReadFile(m_tree + "/version"), "2");
  EXPECT_EQ(support::ReadFile(m_directory + "/c"), "c");
  EXPECT_THAT(Requests(), ElementsAre("UpdateAppInfo " + Record("file:/" + m_directory + "/c",
                                                                "file:/" + m_directory + "/s")));
  EXPECT_THAT(
      fake::LogTexts(),
      HasLogsInOrder(Texts({"[Debug] Applied Metadata : extended, Updatable Metadata : extended",
                            "[Info] GetPackagedDataType bUpdatable:0",
                            "[Info] GetPackagedDataType bUpdatable:1",
                            "[Info] FileSystemUtils::UninstallPackagedData",
                            "[Info] rPackageID : org.example.pkg, rAppType : ch_feeder_standard, "
                            "rDataType : 1",
                            "[Info] FileSystemUtils::InstallPackagedData",
                            "[Info] rPackageID : org.example.pkg, bStarted : 0, rAppType : "
                            "ch_feeder_standard, rDataType : 3",
                            "[Info] SetMetaDataDataList bUpdatable:1"})));
}

TEST_F(ChFeederStandardTest, AnUpdateToTheSameValuesDoesAllTheSame) {
  Make("extended", "http://c", "http://s");
  PutIntoImage({{"a", "x"}});
  m_feeder->RunOperation(false);
  layers::StageValue(*m_feeder, "extended");
  StageURLs("http://c", "http://s");
  Forget();
  m_feeder->UpdateOperation();
  EXPECT_EQ(fake::CallCount("PS_Mount"), 1u);
  EXPECT_THAT(Requests(), ElementsAre("UpdateAppInfo " + Record("http://c", "http://s")));
}

TEST_F(ChFeederStandardTest, AnUpdateOfTheValueInForceUninstallsAgainAtTheNextUpdate) {
  Make("extended", "http://c", "http://s");
  m_feeder->UpdateOperation();
  m_feeder->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(), HasLogTimes("[Info] FileSystemUtils::UninstallPackagedData", 2));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Info] FileSystemUtils::InstallPackagedData")));
}

TEST_F(ChFeederStandardTest, AnUpdateWhoseInstallFailsSaysNothingOfItAndGoesOn) {
  Make("basic", "http://c", "http://s");
  m_feeder->RunOperation(false);
  fake::SetMountHandler([](const fake::Mount&) { return 1; });
  layers::StageValue(*m_feeder, "extended");
  StageURLs("http://c2", "http://s2");
  Forget();
  m_feeder->UpdateOperation();
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] Cannot find target zip file."));
  EXPECT_THAT(Requests(), ElementsAre("UpdateAppInfo " + Record("http://c2", "http://s2")));
}

TEST_F(ChFeederStandardTest, AnUpdateThatTheFrameworkRefusesClearsTheStagedSideToo) {
  Make("basic", "http://c", "http://s");
  layers::StageValue(*m_feeder, "other");
  StageURLs("http://c2", "http://s2");
  m_feeder->UpdateOperation();  // the framework holds no such record
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] FCOrvAppInfoAPI::UpdateAppInfo() return false."));
  EXPECT_EQ(fake::LogTexts().back(), "[Debug] UpdateChannelUsingKelvoApi() return false");
  Forget();
  m_feeder->UpdateOperation();
  EXPECT_THAT(Requests(), ElementsAre("UpdateAppInfo " + Record("", "")));
}

TEST_F(ChFeederStandardTest, WithoutTheFrameworkAnUpdateLogsAndGoesOn) {
  Make("basic", "http://c", "http://s");
  StageURLs("http://c", "http://s");
  fake::SetChannelFrameworkPresent(false);
  m_feeder->UpdateOperation();
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] GetOrvAppInfoAPI() return NULL."));
  EXPECT_EQ(fake::LogTexts().back(), "[Debug] UpdateChannelUsingKelvoApi() return false");
}

TEST_F(ChFeederStandardTest, AShortStagedURLThrowsOutOfAnUpdateBeforeTheFrameworkIsTold) {
  Make("basic", "http://c", "http://s");
  PutIntoImage({{"metadata/c", "c"}});
  StageURLs("file://c", "");
  EXPECT_THROW(m_feeder->UpdateOperation(), std::out_of_range);
  EXPECT_THAT(Requests(), IsEmpty());
}

TEST_F(ChFeederStandardTest, AStopAsksForTheRemovalAndLeavesThePackagedData) {
  Make("extended", "http://c", "http://s");
  PutIntoImage({{"a", "x"}});
  m_feeder->RunOperation(false);
  Forget();
  m_feeder->StopOperation();
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] In"));
  EXPECT_THAT(Requests(), ElementsAre("RemoveAppInfo " + m_removeRecord));
  EXPECT_TRUE(support::Exists(m_tree + "/a"));
  EXPECT_THAT(fake::Channels(), IsEmpty());
}

TEST_F(ChFeederStandardTest, AStopThatTheFrameworkRefusesIsLogged) {
  Make("basic");
  m_feeder->StopOperation();
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] In", "[ERROR] FCOrvAppInfoAPI::RemoveAppInfo() return false.",
                          "[Debug] RemoveChannelUsingKelvoApi() return false"));
}

TEST_F(ChFeederStandardTest, WithoutTheFrameworkAStopLogsAndGoesOn) {
  Make("basic");
  fake::SetChannelFrameworkPresent(false);
  m_feeder->StopOperation();
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] In", "[ERROR] GetOrvAppInfoAPI() return NULL.",
                                            "[Debug] RemoveChannelUsingKelvoApi() return false"));
}

TEST_F(ChFeederStandardTest, StopAndReleaseAskForTheRemovalTwice) {
  Make("basic", "http://c", "http://s");
  m_feeder->RunOperation(false);
  Forget();
  m_feeder->StopOperation();
  m_feeder.reset();
  EXPECT_THAT(Requests(),
              ElementsAre("RemoveAppInfo " + m_removeRecord, "RemoveAppInfo " + m_removeRecord));
}

TEST_F(ChFeederStandardTest, TheReleaseUninstallsWithTheMaskInForce) {
  Make("extended", "file://c", "file://s");
  PutIntoImage({{"a", "x"}, {"metadata/c", "c"}});
  m_feeder->RunOperation(false);
  Forget();
  m_feeder.reset();
  EXPECT_FALSE(support::Exists(m_tree));
  EXPECT_FALSE(support::Exists(m_directory));
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] PackagedDataType : 3",
                                    "[Info] rPackageID : org.example.pkg, rAppType : "
                                    "ch_feeder_standard, rDataType : 3"})));
}

TEST_F(ChFeederStandardTest, TheReleaseOfAnExtendedAppWithDataOnTheWebTakesItsTree) {
  Make("extended", "http://c", "http://s");
  PutIntoImage({{"a", "x"}});
  m_feeder->RunOperation(false);
  m_feeder.reset();
  EXPECT_FALSE(support::Exists(m_tree));
}

TEST_F(ChFeederStandardTest, TheReleaseOfAnAppWithoutPackagedDataUninstallsNothing) {
  Make("basic", "http://c", "http://s");
  m_feeder.reset();
  EXPECT_EQ(fake::LogTexts().back(), "[Info] PackagedDataType : 0");
}

TEST_F(ChFeederStandardTest, AReleaseWhoseDataRemovalThrowsIsLoggedAndGoesOnInward) {
  // Both layers find a list file that is not an object.
  auto pChain = layers::Decorate<ChFeederStandard>(
      ChFeederCustom::DecorateAppType(layers::NewRecord(), "extended", nullptr), "extended");
  support::WriteFile(m_tree + "/app_type_file.txt", "[1]");
  Forget();
  pChain.reset();
  const std::string sException =
      "[ERROR] exception : in Json::Value::resolveReference(key, end): requires objectValue";
  EXPECT_THAT(Requests(), ElementsAre("RemoveAppInfo " + m_removeRecord));
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[ERROR] FCOrvAppInfoAPI::RemoveAppInfo() return false.",
                                    "[Info] rPackageID : org.example.pkg, rAppType : "
                                    "ch_feeder_standard, rDataType : 1",
                                    sException,
                                    "[Info] rPackageID : org.example.pkg, rAppType : "
                                    "ch_feeder_custom, rDataType : 1",
                                    sException})));
}

std::vector<std::string> s_vCallsBeforeEvent;

TEST_F(ChFeederStandardTest, TheInnerLayerActsFirst) {
  const RequestEventCallback pfnNote = [](int eType, void*) {
    s_vCallsBeforeEvent = fake::CallNames();
    s_vCallsBeforeEvent.push_back(std::to_string(eType));
  };
  const auto pChain = layers::Decorate<ChFeederStandard>(
      ChFeederCustom::DecorateAppType(layers::NewRecord(), "", pfnNote), "");
  Forget();
  pChain->RunOperation(false);
  EXPECT_THAT(s_vCallsBeforeEvent, ElementsAre("1000"));
  EXPECT_EQ(fake::CallCount("FCOrvAppInfoAPI::CreateAppInfo"), 1u);
  Forget();
  pChain->StopOperation();
  EXPECT_THAT(s_vCallsBeforeEvent, ElementsAre("1001"));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] In", "[Info] In"));
  EXPECT_EQ(fake::CallCount("FCOrvAppInfoAPI::RemoveAppInfo"), 1u);
}

}  // namespace
