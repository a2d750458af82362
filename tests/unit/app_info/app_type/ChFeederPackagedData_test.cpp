// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// Updates of the two feeder layers that find a list file with unexpected contents.
#include "app_info/app_type/ChFeederPackagedData.h"

#include <dlog.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include "app_info/app_type/ChFeederCustom.h"
#include "app_info/app_type/ChFeederStandard.h"
#include "fake/control/calls.h"
#include "fake/control/channels.h"
#include "fake/control/log.h"
#include "layers.h"
#include "support/files.h"
#include "support/log_matchers.h"
#include "utils/FileSystemUtils.h"

namespace {

using support::HasLogsInOrder;
using support::HasLogTimes;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;

/// JSON that is not a list of texts, each with the message of the library.
const std::vector<std::pair<std::string, std::string>> MISSHAPEN = {
    {"[1]", "in Json::Value::resolveReference(key, end): requires objectValue"},
    {"{\"app_type\":[{}]}", "Type is not convertible to string"}};

class ChFeederPackagedDataTest : public testing::Test {
 protected:
  ChFeederPackagedDataTest() {
    boost::filesystem::remove_all(FileSystemUtils::GetHbbTvDirectoryPath());
    Forget();
  }

  void Forget() {
    fake::ClearLog();
    fake::ClearCalls();
    fake::ClearChannelRequests();
  }
  void WriteList(const std::string& content) {
    support::WriteFile(m_tree + "/app_type_file.txt", content);
  }
  static std::vector<std::string> Errors() { return fake::LogTexts(DLOG_ERROR); }
  static std::vector<std::string> Requests() {
    std::vector<std::string> requests;
    for (const fake::ChannelRequest& request : fake::ChannelRequests()) {
      requests.push_back(request.operation + " " + request.record);
    }
    return requests;
  }
  static std::string UpdateRequest(const std::string& channels, const std::string& schedule) {
    return "UpdateAppInfo {\"channel_data_url\":\"" + channels +
           "\",\"pkg_id\":\"org.example.pkg\",\"schedule_data_url\":\"" + schedule +
           "\",\"widget_id\":\"AbCdEfGhIj.widget\"}\n";
  }

  const std::string m_tree = FileSystemUtils::GetHbbTvDirectoryPath() + layers::PACKAGE;
};

TEST_F(ChFeederPackagedDataTest, WhatTheRemovalThrowsIsLoggedAndEndsThere) {
  for (const auto& [content, text] : MISSHAPEN) {
    WriteList(content);
    Forget();
    ChFeederPackagedData::RemoveForUpdate(layers::PACKAGE, "ch_feeder_custom", 1);
    EXPECT_THAT(Errors(), ElementsAre("[ERROR] exception : " + text)) << content;
  }
}

TEST_F(ChFeederPackagedDataTest, ARemovalThatDoesNotThrowTakesWhatItsTypeSays) {
  WriteList("{\"app_type\":[\"ch_feeder_custom\"]}");
  ChFeederPackagedData::RemoveForUpdate(layers::PACKAGE, "ch_feeder_custom", 2);
  EXPECT_TRUE(support::Exists(m_tree));
  ChFeederPackagedData::RemoveForUpdate(layers::PACKAGE, "ch_feeder_custom", 1);
  EXPECT_FALSE(support::Exists(m_tree));
  EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(ChFeederPackagedDataTest, AStandardUpdateWhoseRemovalThrowsInstallsAndClears) {
  for (const auto& [content, text] : MISSHAPEN) {
    const auto feeder = layers::Decorate<ChFeederStandard>("extended");
    layers::Apply(*feeder, "channel_data_url", "http://old/c");
    layers::Apply(*feeder, "schedule_data_url", "http://old/s");
    fake::AddChannel("{\"pkg_id\":\"org.example.pkg\"}");
    WriteList(content);
    layers::StageValue(*feeder, "extended");
    layers::Stage(*feeder, "channel_data_url", "http://c");
    layers::Stage(*feeder, "schedule_data_url", "http://s");
    Forget();
    feeder->UpdateOperation();
    EXPECT_THAT(fake::LogTexts(),
                HasLogsInOrder(Texts(
                    {"[Info] FileSystemUtils::UninstallPackagedData", "[ERROR] exception : " + text,
                     "[Info] FileSystemUtils::InstallPackagedData",
                     "[Info] rPackageID : org.example.pkg, bStarted : 0, rAppType : "
                     "ch_feeder_standard, rDataType : 1"})));
    EXPECT_THAT(Errors(), ElementsAre("[ERROR] exception : " + text));
    EXPECT_THAT(Requests(), ElementsAre(UpdateRequest("http://c", "http://s")));
    Forget();
    feeder->UpdateOperation();
    EXPECT_EQ(fake::LogTexts().front(),
              "[Debug] Applied Metadata : extended, Updatable Metadata : ");
    EXPECT_THAT(Requests(), ElementsAre(UpdateRequest("", "")));
  }
}

TEST_F(ChFeederPackagedDataTest, ACustomUpdateWhoseRemovalThrowsClearsTheStagedValue) {
  for (const auto& [content, text] : MISSHAPEN) {
    const auto feeder = layers::Decorate<ChFeederCustom>(layers::NewRecord(), "", nullptr);
    WriteList(content);
    layers::StageValue(*feeder, "basic");
    Forget();
    feeder->UpdateOperation();
    EXPECT_THAT(Errors(), ElementsAre("[ERROR] exception : " + text));
    // With the value cleared both are empty, so the next update removes nothing.
    Forget();
    feeder->UpdateOperation();
    EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] In"));
  }
}

TEST_F(ChFeederPackagedDataTest, AnUpdateWhoseRemovalThrowsReachesTheOuterLayer) {
  const auto chain = layers::Decorate<ChFeederStandard>(
      ChFeederCustom::DecorateAppType(layers::NewRecord(), "extended", nullptr), "extended");
  WriteList("[1]");
  Forget();
  chain->UpdateOperation();
  EXPECT_THAT(fake::LogTexts(), HasLogTimes("[ERROR] exception : " + MISSHAPEN[0].second, 2));
  EXPECT_THAT(Requests(), ElementsAre(UpdateRequest("", "")));
}

}  // namespace
