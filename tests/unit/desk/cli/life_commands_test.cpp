// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv up on a TV that is already up, tv status, tv power-cycle, tv daemon.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <ctime>

#include "scripted_tv.h"

namespace desk::cli {
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
                 "the daemon is not in its main loop after 0 s; desk-tv keeps retrying: see `tv "
                 "status` and `tv log`");
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

TEST_F(CliLife, StatusShowsHowTheLastDaemonEnded) {
  m_script.Answer("tv.status", R"json({"daemon":{"running":true,"pid":9,"restarts":1,
      "reason":"signal 9 (Killed)"}})json");
  Do({"status"});
  EXPECT_EQ(DaemonLine(), "daemon   running, pid 9, 1 restart; last end: signal 9 (Killed)");
}

TEST_F(CliLife, StatusOfTheFirstDaemonShowsNoEnd) {
  m_script.Answer("tv.status", R"({"daemon":{"running":true,"pid":9,"restarts":0,"reason":""}})");
  Do({"status"});
  EXPECT_EQ(DaemonLine(), "daemon   running, pid 9, 0 restarts");
}

TEST_F(CliLife, StatusShowsAClockThatIsAheadOfTheMachine) {
  const long ahead = std::time(nullptr) + 7200 + 5;
  m_script.Answer("tv.status", R"({"speed":1,"clock":)" + std::to_string(ahead) + "}");
  Do({"status"});
  EXPECT_NE(m_out.str().find("Z, 2 hours ahead of this machine\n"), std::string::npos)
      << m_out.str();
}

TEST_F(CliLife, StatusShowsNoClockThatIsTheMachines) {
  m_script.Answer("tv.status", R"({"speed":1,"clock":)" + std::to_string(std::time(nullptr)) + "}");
  Do({"status"});
  EXPECT_EQ(m_out.str().find("clock"), std::string::npos);
}

// A desk on which no TV runs yet.
class CliUp : public CliLife {
 protected:
  std::string ErrorOf(const std::string& root) {
    try {
      const Request request = ReadCommandLine(TvCommands(), {"up"});
      Session session(DeskPaths(root), m_out, m_err, false,
                      [](const DeskPaths&) -> std::unique_ptr<Television> {
                        throw DeskError(DeskError::NO_TV, "none");
                      });
      request.command->run(session, request.words);
    } catch (const DeskError& error) {
      return error.Code() + ": " + error.what();
    }
    return "accepted";
  }
};

TEST_F(CliUp, ADirectoryWithOtherFilesIsRefusedAndNotChanged) {
  WriteFile(m_root + "/tmp/thesis.txt", "mine");
  EXPECT_EQ(ErrorOf(m_root),
            "Failed: " + m_root +
                " contains files that do not belong to a TV; nothing was changed: a TV needs a new "
                "or an empty directory; choose another directory with --root");
  EXPECT_TRUE(std::filesystem::exists(m_root + "/tmp/thesis.txt"));
  EXPECT_FALSE(std::filesystem::exists(m_root + "/log"));
}

TEST_F(CliUp, TheRootAndTheHomeDirectoryAreUsageErrors) {
  setenv("HOME", m_root.c_str(), 1);
  for (const std::string& root : {std::string("/"), std::string("/tmp"), m_root}) {
    EXPECT_EQ(ErrorOf(root).rfind("Usage: a TV needs a directory of its own", 0), 0U) << root;
  }
}

class InterruptedTv : public ScriptedTv {
 public:
  using ScriptedTv::ScriptedTv;
  Json::Value Call(const std::string& method, const Json::Value& request) override {
    if (method == "pkg.install") {
      raise(SIGINT);
    }
    return ScriptedTv::Call(method, request);
  }
  void Wait(std::chrono::milliseconds) override { raise(SIGINT); }
};

class CliInterrupted : public CliLife {
 protected:
  void RunInterrupted(const std::vector<std::string>& words) {
    const Request request = ReadCommandLine(TvCommands(), words);
    Session session(DeskPaths(m_root), m_out, m_err, false,
                    [this](const DeskPaths&) { return std::make_unique<InterruptedTv>(m_script); });
    request.command->run(session, request.words);
  }
};
using CliInterruptedDeathTest = CliInterrupted;

TEST_F(CliInterruptedDeathTest, UpSaysThatTheTvContinuesAndHowToStopIt) {
  m_script.Answer("tv.status", In("starting"));
  EXPECT_EXIT(RunInterrupted({"up"}), testing::KilledBySignal(SIGINT),
              "the TV continues to start in the background.*`tv down` stops it");
}

TEST_F(CliInterruptedDeathTest, AnInstallSaysThatItContinues) {
  WriteFile(m_root + "/a.wgt", "");
  EXPECT_EXIT(RunInterrupted({"pkg", "install", m_root + "/a.wgt"}),
              testing::KilledBySignal(SIGINT),
              "the TV continues to install the package.*`tv pkg uninstall ID` removes it");
}

TEST_F(CliInterrupted, AnIgnoredInterruptStaysIgnored) {
  std::signal(SIGINT, SIG_IGN);
  WriteFile(m_root + "/a.wgt", "");
  RunInterrupted({"pkg", "install", m_root + "/a.wgt"});
  EXPECT_EQ(std::signal(SIGINT, SIG_DFL), SIG_IGN);
}

TEST_F(CliLife, InstallWarnsOfAnImageThatTheTvCannotMount) {
  WriteFile(m_root + "/a.wgt", "");
  m_script.Answer("pkg.install", R"({"package":"feederpack","version":"1.0"})");
  m_script.Answer("mount.check", R"({"unmountable":[{"image":"feederpack.tmg",
      "reason":"no loop; /dev/fuse: No such file or directory"}]})");
  EXPECT_EQ(Do({"pkg", "install", m_root + "/a.wgt"}), 0);
  EXPECT_EQ(m_script.Asked("mount.check"), R"({"package":"feederpack"})");
  EXPECT_NE(m_err.str().find(
                "tv: warning: feederpack is installed without the data in feederpack.tmg, which "
                "this TV cannot mount: no loop; /dev/fuse: No such file or directory\n"),
            std::string::npos);
}

TEST_F(CliLife, StatusShowsWhyNoDaemonRuns) {
  m_script.Answer("tv.status",
                  R"({"daemon":{"running":false,"pid":0,"restarts":2,"reason":"exit status 3"}})");
  Do({"status"});
  EXPECT_EQ(DaemonLine(), "daemon   not running (exit status 3), 2 restarts");
}

}  // namespace
}  // namespace desk::cli
