// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// What the daemon waits for, according to the journal.
#include <gtest/gtest.h>

#include "desk/cli/daemon_calls.h"
#include "scripted_tv.h"

namespace desk::cli {
namespace {

using std::chrono::seconds;
using Texts = std::vector<std::string>;

const Timestamp NOON = *ParseTimestamp("2026-11-21T12:00:00.000Z");

/// A sequence of entries, by default one second apart.
class Calls {
 public:
  Calls& Add(const std::string& thread, const std::string& call, const std::string& args,
             const std::string& result = "0") {
    Json::Value entry = ParseJson(R"({"args":[)" + args + R"(],"result":)" + result + "}");
    entry["seq"] = static_cast<Json::UInt64>(m_entries.size() + 1);
    entry["time"] = FormatTimestamp(m_now);
    entry["thread"] = thread;
    entry["call"] = call;
    m_entries.push_back(entry);
    return *this;
  }
  Calls& At(Timestamp time) {
    m_now = time;
    return *this;
  }
  /// A launch in the background on the thread "ORVInstaller".
  Calls& Preload(const std::string& app, const std::string& result = "0") {
    const std::string thread = "ORVInstaller";
    return Add(thread, "app_control_create", "5")
        .Add(thread, "app_control_set_app_id", "5,\"" + app + "\"")
        .Add(thread, "app_control_add_extra_data", R"(5,"mode","backgroundAtStartup")")
        .Add(thread, "app_control_send_launch_request", "5,null,null", result)
        .Add(thread, "app_control_destroy", "5");
  }
  Calls& Answers(const std::string& app) {
    return Add("ORVInstaller", "app_operation_set_current_app", "\"epg\",\"" + app + "\"");
  }
  const std::vector<Json::Value>& Entries() const { return m_entries; }

 private:
  std::vector<Json::Value> m_entries;
  Timestamp m_now = NOON;
};

TEST(CliWaits, AnAppThatLoadsBehindAnotherOneIsAWait) {
  Calls calls;
  calls.Answers("layout.App").Preload("guide.App");
  EXPECT_EQ(WaitsOf(calls.Entries(), NOON + seconds(12)),
            Texts{"waiting for guide.App to load, 12 of 20 s"});
}

TEST(CliWaits, TheWaitEndsWhenTheAppAnswers) {
  Calls calls;
  calls.Answers("layout.App").Preload("guide.App").Answers("guide.App");
  EXPECT_EQ(WaitsOf(calls.Entries(), NOON + seconds(12)), Texts());
}

TEST(CliWaits, TheWaitEndsAfterTwentySeconds) {
  Calls calls;
  calls.Answers("layout.App").Preload("guide.App");
  EXPECT_EQ(WaitsOf(calls.Entries(), NOON + seconds(21)), Texts());
}

TEST(CliWaits, AnAppThatAnswersItselfIsNotWaitedFor) {
  Calls calls;
  calls.Answers("guide.App").Preload("guide.App");
  EXPECT_EQ(WaitsOf(calls.Entries(), NOON), Texts());
}

TEST(CliWaits, ARejectedLaunchIsTriedAgain) {
  Calls calls;
  calls.Preload("guide.App", "-17825757");
  EXPECT_EQ(WaitsOf(calls.Entries(), NOON + seconds(4)),
            Texts{"trying to launch guide.App every 5 s: the system rejects it"});
  calls.Preload("guide.App");
  EXPECT_EQ(WaitsOf(calls.Entries(), NOON + seconds(4)), Texts());
}

TEST(CliWaits, AWidgetIdIsWaitedForUntilItCame) {
  Calls calls;
  calls.Add("ORVInstaller", "vconf_notify_key_changed", "\"memory/was/app_install\"");
  EXPECT_EQ(WaitsOf(calls.Entries(), NOON),
            Texts{"waiting for the web-app service to name a widget id"});
  calls.Add("main", "vconf_ignore_key_changed", "\"memory/was/app_install\"");
  EXPECT_EQ(WaitsOf(calls.Entries(), NOON), Texts());
}

TEST(CliWaits, OnlyTheDaemonsPresentRunCounts) {
  Calls calls;
  calls.Preload("old.App").Add("main", "FCTask::Create", "\"ORVScheduler\",1000,8192", "true");
  calls.Preload("new.App");
  const auto entries = SinceLastStart(calls.Entries());
  EXPECT_EQ(entries.size(), 6U);
  EXPECT_EQ(LaunchRequestsIn(entries).size(), 1U);
  EXPECT_EQ(SinceLastStart(Calls().Preload("new.App").Entries()).size(), 5U);
}

TEST(CliWaits, TheNextTickIsTwelveMinutesAfterTheLast) {
  Calls calls;
  EXPECT_FALSE(NextTick(calls.Entries()).has_value());
  calls.Add("main", "FCTask::Send", "\"ORVScheduler\",1002", "true");
  EXPECT_FALSE(NextTick(calls.Entries()).has_value()) << "network time is not set";
  calls.Add("main", "vconf_keynode_get_int", "9", "1")
      .Add("main", "FCTask::Send", "\"ORVScheduler\",1002", "true");
  EXPECT_EQ(NextTick(calls.Entries()), NOON + seconds(720));
  calls.At(NOON + seconds(700)).Add("main", "FCTask::Send", "\"ORVScheduler\",1004", "true");
  EXPECT_EQ(NextTick(calls.Entries()), NOON + seconds(1420));
}

TEST(CliWaits, NetworkTimeAtTheStartStartsTheTimer) {
  Calls calls;
  calls.Add("main", "vconf_get_int", "\"memory/menu/network/set_time\",1")
      .Add("main", "FCTask::Send", "\"ORVScheduler\",1002", "true");
  EXPECT_EQ(NextTick(calls.Entries()), NOON + seconds(720));
}

class CliStatus : public CliCommands {};

TEST_F(CliStatus, StatusShowsWhatTheDaemonIsBusyWith) {
  Calls calls;
  calls.Answers("layout.App").Preload("guide.App");
  std::string lines;
  for (const auto& entry : calls.Entries()) {
    lines += FormatJson(entry) + "\n";
  }
  WriteFile(DeskPaths(m_root).Journal(), lines);
  m_script.Answer("tv.status", R"({"clock":1795262405,"daemon":{"running":true,"pid":9}})");
  Do({"status"});
  EXPECT_NE(m_out.str().find("\nbusy     waiting for guide.App to load, 5 of 20 s\nspeed"),
            std::string::npos)
      << m_out.str();
  m_out.str("");
  Do({"status", "--json"});
  EXPECT_EQ(FormatJson(ParseJson(m_out.str())["busy"]),
            R"(["waiting for guide.App to load, 5 of 20 s"])");
}

TEST_F(CliStatus, ADaemonThatWaitsForNothingHasNoSuchLine) {
  m_script.Answer("tv.status", R"({"clock":1795262405,"daemon":{"running":true,"pid":9}})");
  Do({"status"});
  EXPECT_EQ(m_out.str().find("busy"), std::string::npos);
}

}  // namespace
}  // namespace desk::cli
