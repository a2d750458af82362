// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv up on a TV that is there already, tv status, tv power-cycle, tv daemon.
#include <gtest/gtest.h>

#include <chrono>

#include "scripted_tv.h"

namespace desk {
namespace {

using namespace std::chrono_literals;

class CliLife : public CliCommands {
 protected:
  // The TV's status, with its daemon in this state.
  static std::string In(const std::string& state) {
    return R"({"pid":7,"daemon":{"state":")" + state + R"("}})";
  }
  std::string AlreadyUp() const { return "already up: " + m_root + ", pid 7\n"; }
  std::string DaemonLine() const {
    const std::string text = m_out.str();
    const auto start = text.find("daemon   ");
    return text.substr(start, text.find('\n', start) - start);
  }
};

TEST_F(CliLife, UpOnARunningTvIsASuccessWithANote) {
  m_script.Answer("tv.status", R"({"pid":7})");
  EXPECT_EQ(Do({"up"}), 0);
  EXPECT_EQ(m_out.str(), AlreadyUp());
}

TEST_F(CliLife, UpOnARunningTvSaysThatItsOptionsStay) {
  m_script.Answer("tv.status", R"({"pid":7})");
  Do({"up", "--speed", "10"});
  EXPECT_EQ(m_out.str(),
            "already up: " + m_root + ", pid 7; its options stay as they are until `tv down`\n");
}

TEST_F(CliLife, UpWaitsForADaemonThatIsOnItsWay) {
  for (const char* state : {"starting", "restarting", "stopping"}) {
    m_script = Script();
    m_script.AnswerFirst("tv.status", In(state));
    m_script.AnswerFirst("tv.status", In(state));
    m_script.Answer("tv.status", In("ready"));
    EXPECT_EQ(Do({"up"}), 0) << state;
    EXPECT_EQ(m_script.asked.size(), 3U) << state;
  }
}

TEST_F(CliLife, UpDoesNotWaitForADaemonThatWasStopped) {
  m_script.Answer("tv.status", In("exited"));
  EXPECT_EQ(Do({"up"}), 0);
  EXPECT_EQ(m_script.waits, 0);
}

TEST_F(CliLife, UpOnATvWhoseDaemonDoesNotGetReadyTimesOut) {
  for (const char* state : {"starting", "restarting"}) {
    m_script.Answer("tv.status", In(state));
    const Failure failure = Fails({"up", "--timeout", "0"});
    EXPECT_EQ(failure.Code(), Exit::TimedOut) << state;
    EXPECT_STREQ(failure.what(),
                 "the daemon is not in its main loop after 0 s, and the TV goes on trying: `tv "
                 "status` and `tv log` tell how it gets on");
  }
  EXPECT_EQ(m_out.str(), "");
}

TEST_F(CliLife, DaemonVerbsAskTheTv) {
  for (const std::string verb : {"stop", "start", "kill", "restart"}) {
    Do({"daemon", verb});
    EXPECT_EQ(m_script.Asked("daemon." + verb), "{}");
  }
}

TEST_F(CliLife, WhatStartsTheDaemonIsNotWaitedForWithoutEnd) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> commands = {
      {"tv.power_cycle", {"power-cycle"}},
      {"daemon.start", {"daemon", "start"}},
      {"daemon.restart", {"daemon", "restart"}}};
  for (auto [method, words] : commands) {
    m_script = Script();
    Do(words);
    ASSERT_EQ(m_script.limits.size(), 1U) << method;
    EXPECT_LE(m_script.limits[0], 120s) << method;
    EXPECT_GT(m_script.limits[0], 110s) << method;
    m_script.silent = {method};
    words.insert(words.end(), {"--timeout", "0.5"});
    const Failure failure = Fails(words);
    EXPECT_EQ(failure.Code(), Exit::TimedOut) << method;
    EXPECT_NE(std::string(failure.what()).find("after 0.5 s"), std::string::npos) << method;
    EXPECT_LE(m_script.limits[1], 500ms) << method;
  }
}

TEST_F(CliLife, StatusTellsHowTheDaemonBeforeEnded) {
  m_script.Answer("tv.status", R"json({"daemon":{"running":true,"pid":9,"restarts":1,
      "reason":"signal 9 (Killed)"}})json");
  Do({"status"});
  EXPECT_EQ(DaemonLine(), "daemon   running, pid 9, 1 restarts; last end: signal 9 (Killed)");
}

TEST_F(CliLife, StatusOfTheFirstDaemonTellsOfNoEnd) {
  m_script.Answer("tv.status", R"({"daemon":{"running":true,"pid":9,"restarts":0,"reason":""}})");
  Do({"status"});
  EXPECT_EQ(DaemonLine(), "daemon   running, pid 9, 0 restarts");
}

TEST_F(CliLife, StatusTellsWhyNoDaemonRuns) {
  m_script.Answer("tv.status",
                  R"({"daemon":{"running":false,"pid":0,"restarts":2,"reason":"exit status 3"}})");
  Do({"status"});
  EXPECT_EQ(DaemonLine(), "daemon   not running (exit status 3), 2 restarts");
}

}  // namespace
}  // namespace desk
