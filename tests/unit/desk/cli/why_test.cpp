// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv why and tv schedule with given logs and a given dump.
#include <gtest/gtest.h>

#include "desk/cli/account.h"
#include "scripted_tv.h"

namespace desk::cli {
namespace {

/// A service app, feeder.Feed, at noon on the TV's clock.
class CliWhy : public CliCommands {
 protected:
  void SetUp() override {
    m_script.Answer("tv.status", R"({"clock":1795262400})");
    Know(true, 1);
    Due("");
  }

  void Know(bool running, int networkTime, const std::string& channels = "[]") {
    m_script.Answer("dump",
                    std::string(R"({"daemon":{"reason":"exit status 3","running":)") +
                        (running ? "true" : "false") +
                        R"(},"packages":[{"id":"feeder"},{"id":"plain"}],"apps":[)"
                        R"({"id":"feeder.Feed","package":"feeder"},{"id":"byhand","package":""}],)"
                        R"("channels":)" +
                        channels + R"(,"keys":{"memory/menu/network/set_time":)" +
                        std::to_string(networkTime) + "}}");
  }
  void Due(const std::string& time) {
    std::filesystem::remove_all(DeskPaths(m_root).DaemonData());
    MakeStore({{"feeder", R"({"orv_type":{"ch_feeder_custom":"x"},"orv_data":{)" +
                              std::string(R"("expiration_date_str":")") + time + "\"}}"}});
  }
  /// Adds a record with these URLs: the package feeds a channel from files.
  void Feeds(const std::string& schedule) {
    std::filesystem::remove_all(DeskPaths(m_root).DaemonData());
    MakeStore({{"feeder", R"({"orv_type":{"ch_feeder_standard":"x"}})"}});
    Know(true, 1,
         R"([{"pkg_id":"feeder","service_id":900001,"channel_data_url":"http://x/c.json",)"
         R"("schedule_data_url":")" +
             schedule + "\"}]");
  }
  void TvLog(const std::string& lines) { WriteFile(DeskPaths(m_root).TvLog(), lines); }
  void DaemonLog(const std::string& lines) { WriteFile(DeskPaths(m_root).DaemonLog(), lines); }
  void Journal(const std::string& lines) { WriteFile(DeskPaths(m_root).Journal(), lines); }
  void Output(const std::string& text) {
    WriteFile(DeskPaths(m_root).Log() + "/feeder.Feed.log", text);
  }

  Json::Value Printed(const std::vector<std::string>& words) {
    m_out.str("");
    EXPECT_EQ(Do(words), 0);
    return ParseJson(m_out.str());
  }
  std::string Verdict(const std::string& id = "feeder") {
    const Json::Value verdicts = Printed({"why", id, "--json"})["verdicts"];
    EXPECT_EQ(verdicts.size(), 1U);
    return verdicts[0]["text"].asString();
  }
  Json::Value App() { return Printed({"schedule", "--json"})["apps"][0]; }
  std::string WaitsFor() { return Printed({"schedule", "--json"})["waits_for"].asString(); }
};

const char* const LAUNCH =
    "2026-11-21T11:50:00.000Z feeder.Feed launched: pid 7, its output from byte 4\n";
const char* const END = "2026-11-21T11:51:00.000Z feeder.Feed ended: exit status 1\n";

std::string Sent(const std::string& result) {
  return R"({"seq":1,"time":"2026-11-21T11:55:00.000Z","thread":"ORVScheduler",)"
         R"("call":"app_control_create","args":[1],"result":0})"
         "\n"
         R"({"seq":2,"time":"2026-11-21T11:55:00.001Z","thread":"ORVScheduler",)"
         R"("call":"app_control_set_app_id","args":[1,"feeder.Feed"],"result":0})"
         "\n"
         R"({"seq":3,"time":"2026-11-21T11:55:00.002Z","thread":"ORVScheduler",)"
         R"("call":"app_control_send_launch_request","args":[1],"result":)" +
         result + "}\n";
}

TEST_F(CliWhy, AnAppThatIsNotDueIsNotLaunched) {
  Due("2026-11-21T12:42:00Z");
  EXPECT_EQ(Verdict(), "not launched: expiration_date_str is in 42 minutes");
}

TEST_F(CliWhy, WithoutNetworkTimeNothingIsLaunched) {
  Know(true, 0);
  EXPECT_EQ(Verdict(),
            "not launched: the TV has no network time (memory/menu/network/set_time is not 1)");
}

TEST_F(CliWhy, AnAppWhoseTurnHasNotComeWaits) {
  EXPECT_EQ(Verdict(), "not launched: its turn has not come yet; see `tv schedule`");
}

TEST_F(CliWhy, AnAppThatEndedIsReportedWithItsOutput) {
  TvLog(std::string(LAUNCH) + END);
  Output("old\none\ntwo\nthree\nfour\n");
  EXPECT_EQ(Verdict(), "launched, ended with exit status 1: two | three | four");
}

TEST_F(CliWhy, AnAppThatPrintedNothingIsNamedAsSuch) {
  TvLog(std::string(LAUNCH) + END);
  Output("old\n");
  EXPECT_EQ(Verdict(), "launched, ended with exit status 1; it printed nothing");
}

TEST_F(CliWhy, AnAppThatRunsIsReportedWithItsPid) {
  TvLog(LAUNCH);
  EXPECT_EQ(Verdict(), "launched 10 minutes ago, runs (pid 7)");
}

TEST_F(CliWhy, AnEndIsReportedWithTheNextDueTime) {
  Due("2026-11-21T13:00:00Z");
  TvLog(std::string(LAUNCH) + END);
  EXPECT_EQ(Verdict(),
            "launched, ended with exit status 1; it printed nothing; expiration_date_str is in 1 "
            "hour");
}

TEST_F(CliWhy, AnAppThatCouldNotBeStartedIsReportedWithTheReason) {
  TvLog("2026-11-21T11:50:00.000Z cannot launch feeder.Feed: Exec format error\n");
  EXPECT_EQ(Verdict(), "not launched: Exec format error");
}

TEST_F(CliWhy, ALaterRequestThatFailedIsTheReason) {
  TvLog(std::string(LAUNCH) + END);
  Journal(Sent("-17825757"));
  EXPECT_EQ(Verdict(), "not launched: launch rejected");
  Journal(Sent("0"));
  EXPECT_EQ(Verdict(), "launched, ended with exit status 1; it printed nothing");
}

TEST_F(CliWhy, ASwitchedOffTvEndsItsApps) {
  TvLog(std::string(LAUNCH) + "2026-11-21T11:52:00.000Z off\n");
  EXPECT_EQ(Verdict(), "launched, ended with the TV was switched off; it printed nothing");
}

TEST_F(CliWhy, WithoutADaemonNothingIsDone) {
  Know(false, 1);
  EXPECT_EQ(Verdict(),
            "nothing is done: the daemon does not run (exit status 3); `tv daemon start` starts "
            "it");
}

TEST_F(CliWhy, APackageWithoutARowIsNotKnown) {
  EXPECT_EQ(Verdict("plain"),
            "not known to the daemon: `tv explain plain` shows what it makes of it");
}

TEST_F(CliWhy, AnAppWithoutAPackageHasItsOwnVerdict) {
  EXPECT_EQ(Verdict("byhand"), "not launched: no launch of it was requested");
}

TEST_F(CliWhy, AnUnknownIdIsNotFound) {
  EXPECT_EQ(Fails({"why", "nothing"}).Code(), Exit::NotFound);
}

TEST_F(CliWhy, AFileThatIsNotInTheImageIsNotFed) {
  const DeskPaths paths(m_root);
  Feeds("file://meta/feeder/schedule.json");
  EXPECT_EQ(Verdict(), "not fed: the package has no image feeder.App.tmg");
  WriteFile(paths.Package("feeder") + "/res/feeder.App.tmg", "");
  EXPECT_EQ(Verdict(), "not fed: the image feeder.App.tmg was not unpacked");
  std::filesystem::create_directories(paths.DaemonSharedData() + "/hbbtv_app/feeder");
  EXPECT_EQ(Verdict(), "not fed: schedule.json is not in the image");
  WriteFile(m_root + "/meta/feeder/schedule.json", "{broken");
  EXPECT_EQ(Verdict(), "not fed: schedule.json is not JSON");
  WriteFile(m_root + "/meta/feeder/schedule.json", "{}");
  EXPECT_EQ(Verdict(), "fed: it is the channel 900001");
}

TEST_F(CliWhy, AFeederWithoutARecordIsNotFed) {
  Feeds("");
  Know(true, 1);
  EXPECT_EQ(Verdict(), "not fed: the channel framework has no record of the package");
}

TEST_F(CliWhy, TheAccountMergesAllSourcesNewestFirst) {
  TvLog(std::string(LAUNCH) + END);
  Output("old\nlast words\n");
  Journal(Sent("0"));
  DaemonLog(
      "11-21 11:49:00.000 1 2 I/orv-enabler: src/a.cpp: f(1) > [Info] rAppID : feeder.Feed\n"
      "11-21 11:49:01.000 1 3 I/orv-enabler: src/a.cpp: f(1) > [Info] rAppID : other.Feed\n");
  Do({"why", "feeder.Feed"});
  EXPECT_EQ(m_out.str(),
            "2026-11-21T11:55:00.002Z  call     app_control_send_launch_request(1) = 0\n"
            "2026-11-21T11:55:00.001Z  call     app_control_set_app_id(1, \"feeder.Feed\") = 0\n"
            "2026-11-21T11:51:00.000Z  desk-tv  feeder.Feed ended: exit status 1\n"
            "2026-11-21T11:51:00.000Z  output   last words\n"
            "2026-11-21T11:50:00.000Z  desk-tv  feeder.Feed launched: pid 7, its output from byte "
            "4\n"
            "2026-11-21T11:49:00.000Z  daemon   [Info] rAppID : feeder.Feed\n"
            "verdict  ch_feeder_custom: launched, ended with exit status 1: last words\n");
}

TEST_F(CliWhy, AnErrorAfterTheNameBelongsToTheAccount) {
  const std::string line = " 1 2 E/orv-enabler: src/a.cpp: f(1) > ";
  DaemonLog(
      "11-21 11:49:00.000 1 2 I/orv-enabler: x > [Info] packageID : feeder\n"
      "11-21 11:49:01.000" +
      line +
      "[ERROR] of feeder\n"
      "11-21 11:49:02.000 1 3 E/orv-enabler: x > [ERROR] of another thread\n"
      "11-21 11:49:03.000 1 2 I/orv-enabler: x > [Info] pEvent : 1000\n"
      "11-21 11:49:04.000" +
      line + "[ERROR] of the next event\n");
  const Json::Value account = Printed({"why", "feeder", "--json"})["account"];
  ASSERT_EQ(account.size(), 2U);
  EXPECT_EQ(account[0]["text"], "[ERROR] of feeder");
  EXPECT_EQ(account[0]["source"], "daemon");
}

TEST_F(CliWhy, OnlyTheNewestLinesAreShown) {
  TvLog(std::string(LAUNCH) + END);
  Do({"why", "feeder", "-n", "1"});
  EXPECT_EQ(m_out.str().find("2026-11-21T11:51:00.000Z  desk-tv  feeder.Feed ended: exit status "
                             "1\n1 older line left out: -n 0 shows all\nverdict  "),
            0U)
      << m_out.str();
}

TEST_F(CliWhy, TheScheduleShowsDueTimeLaunchAndEnd) {
  Due("2026-11-21T12:42:00Z");
  TvLog(std::string(LAUNCH) + END);
  EXPECT_EQ(FormatJson(App()),
            R"({"app":"feeder.Feed","due":"2026-11-21T12:42:00Z","due_in":2520,)"
            R"("end":"exit status 1","last_launch":"2026-11-21T11:50:00.000Z","package":"feeder",)"
            R"("pid":7,"running":false})");
  m_out.str("");
  Do({"schedule"});
  EXPECT_EQ(m_out.str(),
            "APP          DUE            LAST LAUNCH               ENDED\n"
            "feeder.Feed  in 42 minutes  2026-11-21T11:50:00.000Z  exit status 1\n"
            "waits for its start\n");
}

TEST_F(CliWhy, TheScheduleShowsARequestThatFailed) {
  Journal(Sent("-17825757"));
  EXPECT_EQ(App()["end"], "not started: launch rejected");
  EXPECT_EQ(App()["last_launch"], "2026-11-21T11:55:00.002Z");
}

TEST_F(CliWhy, TheScheduleSaysWhatItWaitsFor) {
  Know(false, 0);
  EXPECT_EQ(WaitsFor(), "the daemon, which does not run: `tv daemon start` starts it");
  Know(true, 0);
  EXPECT_EQ(WaitsFor(), "network time: memory/menu/network/set_time is not 1");
  Know(true, 1);
  Journal(R"({"seq":1,"time":"2026-11-21T11:55:00.000Z","thread":"main","call":"FCTask::Send",)"
          R"("args":["ORVScheduler",1004,false,false],"result":true})"
          "\n");
  EXPECT_EQ(WaitsFor(), "the next tick, in 7 minutes");
  TvLog(LAUNCH);
  EXPECT_EQ(WaitsFor(), "feeder.Feed to finish, or the next tick, in 7 minutes");
  Feeds("");
  EXPECT_EQ(WaitsFor(), "a package with the app type ch_feeder_custom");
}

TEST(CliSubject, AnIdIsNamedAsAWholeOnly) {
  const Subject package("abc", "", "");
  EXPECT_TRUE(package.IsNamedIn("rPackageID : abc"));
  EXPECT_TRUE(package.IsNamedIn("/opt/usr/apps/abc/res"));
  EXPECT_TRUE(package.IsNamedIn("abc.Feed"));
  EXPECT_FALSE(package.IsNamedIn("abcd"));
  EXPECT_FALSE(package.IsNamedIn("xabc"));
  EXPECT_FALSE(package.IsNamedIn("com.abc"));
}

TEST(CliSubject, AnAppIsNotNamedByItsPackagesOtherApps) {
  const Subject app("abc", "abc.Feed", "");
  EXPECT_TRUE(app.IsNamedIn("rAppID : abc.Feed"));
  EXPECT_TRUE(app.IsNamedIn("rPackageID : abc"));
  EXPECT_FALSE(app.IsNamedIn("rAppID : abc.App"));
  EXPECT_FALSE(app.IsNamedIn("rAppID : abc.Feed2"));
}

TEST(CliSubject, ItsDueTimeStandsForIt) {
  EXPECT_TRUE(Subject("abc", "", "2026-11-21T12:42:00Z").IsNamedIn("rTime : 2026-11-21T12:42:00Z"));
}

TEST(CliLogTime, ALineOfLastYearIsOfLastYear) {
  const Timestamp now = *ParseTimestamp("2026-01-01T00:00:01.000Z");
  EXPECT_EQ(LogTime("12-31 23:59:59.000", now), ParseTimestamp("2025-12-31T23:59:59.000Z"));
  EXPECT_EQ(LogTime("01-01 00:00:00.500", now), ParseTimestamp("2026-01-01T00:00:00.500Z"));
  EXPECT_FALSE(LogTime("soon", now).has_value());
}

}  // namespace
}  // namespace desk::cli
