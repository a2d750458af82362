// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// What `tv pkg` and `tv explain` print in addition to the TV's answer.
#include <gtest/gtest.h>

#include "package_maker.h"
#include "scripted_tv.h"
#include "unit/desk/checks/facts.h"

namespace desk::cli {
namespace {

class CliPackages : public CliCommands {
 protected:
  CliPackages() {
    m_script.Answer("pkg.install", R"({"package":"feed000001","version":"1.0"})");
    PackageMaker()
        .AddConfig("feed000001", "1.0",
                   MetadataElement(Key("orv_type/ch_feeder_standard"), "extended") +
                       MetadataElement(Key("orv_data/chanel_data_url"), "https://a"))
        .Add("index.html", "")
        .Write(m_file);
  }
  bool Warned(const std::string& text) const { return m_err.str().find(text) != std::string::npos; }
  const std::string m_file = m_root + "/feed.wgt";
};

TEST_F(CliPackages, AnInstallPrintsTheFindingsAsWarnings) {
  EXPECT_EQ(Do({"pkg", "install", m_file}), 0);
  EXPECT_EQ(m_out.str(), "installed feed000001 1.0\n");
  EXPECT_TRUE(
      Warned("warning: \"chanel_data_url\" is not a data key that the daemon uses. Did you "
             "mean \"channel_data_url\"? [unknown-data-key]\n"));
  EXPECT_TRUE(Warned("error: ch_feeder_standard: the package has no image feed000001.App.tmg"));
}

TEST_F(CliPackages, TheFindingsAreInTheJsonOfAnInstall) {
  Do({"pkg", "update", "--json", m_file});
  EXPECT_EQ(ParseJson(m_out.str())["findings"][0]["id"], "unknown-data-key");
}

TEST_F(CliPackages, AFileThatCannotBeCheckedIsSaidToBe) {
  WriteFile(m_file, "no archive");
  EXPECT_EQ(Do({"pkg", "install", m_file}), 0);
  EXPECT_TRUE(Warned("[not-checked]"));
}

TEST_F(CliPackages, AChangeThatTheDaemonDoesNotSeeIsReported) {
  m_script.Answer("tv.status", R"({"daemon":{"running":false}})");
  Do({"pkg", "install", m_file});
  EXPECT_TRUE(Warned("the daemon is not running and will not learn of this install"));
  Do({"pkg", "update", m_file});
  EXPECT_TRUE(Warned("will not learn of this update"));
  Do({"pkg", "uninstall", "feed000001"});
  EXPECT_TRUE(Warned("will not learn of this removal"));
}

TEST_F(CliPackages, WithARunningDaemonThereIsNoSuchWarning) {
  m_script.Answer("tv.status", R"({"daemon":{"running":true}})");
  Do({"pkg", "install", m_file});
  Do({"pkg", "uninstall", "feed000001"});
  EXPECT_FALSE(Warned("the daemon is not running"));
}

TEST_F(CliPackages, ALaunchWarnsOfAnAppThatEndsAtOnce) {
  m_script.Answer("app.launch", R"({"result":0,"pid":7})");
  m_script.events.emplace_back("app", ParseJson(R"({"id":"other.a","state":"exited"})"));
  m_script.events.emplace_back("app", ParseJson(R"({"id":"p.a","state":"exited"})"));
  EXPECT_EQ(Do({"app", "launch", "p.a"}), 0);
  EXPECT_TRUE(Warned("tv: warning: p.a ended at once: `tv why p.a` shows its output"));
}

TEST_F(CliPackages, ALaunchOfAnAppThatRunsDoesNotWarn) {
  m_script.Answer("app.launch", R"({"result":0,"pid":7})");
  m_script.events.emplace_back("app", ParseJson(R"({"id":"other.a","state":"exited"})"));
  EXPECT_EQ(Do({"app", "launch", "p.a"}), 0);
  EXPECT_EQ(m_err.str(), "");
}

TEST_F(CliPackages, AnOperationForAMissingAppIsWarnedOf) {
  m_script.Answer("op.set", R"({"result":0})");
  m_script.Answer("app.info", R"({"found":false})");
  EXPECT_EQ(Do({"op", "set", "epg", "no.app"}), 0);
  EXPECT_TRUE(Warned("tv: warning: there is no app \"no.app\""));
  m_err.str("");
  m_script.Answer("app.info", R"({"found":true})");
  Do({"op", "set", "epg", "no.app"});
  EXPECT_EQ(m_err.str(), "");
}

TEST_F(CliPackages, TheChannelListTellsWhatIsBehindTheUrls) {
  m_script.Answer("channel.list", R"({"channels":[{"service_id":1,"pkg_id":"p","widget_id":"w",
      "channel_data_url":"file:/none.json","schedule_data_url":"https://a"}]})");
  Do({"channel", "list"});
  EXPECT_NE(m_out.str().find("file:/none.json  missing"), std::string::npos) << m_out.str();
  m_out.str("");
  Do({"channel", "list", "--json"});
  const Json::Value list = ParseJson(m_out.str());
  EXPECT_EQ(list[0]["channel_data_state"], "missing");
  EXPECT_EQ(list[0]["schedule_data_state"], "web");
}

TEST_F(CliPackages, ExplainOfAFileHasTheSameFindings) {
  Do({"explain", "--json", m_file});
  const Json::Value json = ParseJson(m_out.str());
  EXPECT_EQ(json["findings"][0]["id"], "unknown-data-key");
  EXPECT_TRUE(json["state"].empty());
}

TEST_F(CliPackages, ExplainOfAnInstalledPackageTellsItsState) {
  m_script.Answer("pkg.info", R"({"found":true,"id":"p","version":"1","apps":[{"id":"p.a",
      "component":"ui","metadata":[{"key":")" +
                                  Key("orv_type/custom_ui_standard") + R"(","value":"info"}]}]})");
  Do({"explain", "p"});
  EXPECT_NE(m_out.str().find("On this desk:\n  - installed, but unknown to the daemon: "),
            std::string::npos);
}

}  // namespace
}  // namespace desk::cli
