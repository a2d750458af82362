// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/power.h"

#include <gtest/gtest.h>

#include "desk/tv/process.h"
#include "memory_router.h"
#include "support/files.h"

namespace desk::tv {
namespace {

constexpr const char* NETWORK_TIME = "memory/menu/network/set_time";

// A television whose daemon is a process that sleeps, and is ready as soon as it is started.
class PowerTest : public testing::Test {
 protected:
  PowerTest() {
    for (const std::string& path : {m_paths.Db(), m_paths.Tmp()}) {
      support::MakeDirectories(path);
    }
    m_keys = std::make_unique<Keys>(m_router, m_paths);
    m_supervisor = std::make_unique<Supervisor>(
        m_router, m_callers, m_log, [this] { return Launch(); }, SupervisorTimes());
  }
  ~PowerTest() override {
    m_power.reset();
    m_supervisor.reset();
  }

  DaemonProcess Launch() {
    m_steps.push_back("daemon");
    ProcessSpec spec;
    spec.arguments = {"sleep", "1000"};
    DaemonProcess process;
    process.pid = StartProcess(spec);
    m_pid = process.pid;
    return process;
  }

  void Make(bool offline) {
    PowerHooks hooks;
    hooks.off = {[this] { m_steps.push_back("off 1"); }, [this] { m_steps.push_back("off 2"); }};
    hooks.on = {[this] { m_steps.push_back("on"); }};
    m_power = std::make_unique<Power>(m_router, m_paths, *m_keys, *m_supervisor, m_log, offline,
                                      hooks, [this] { m_steps.push_back("quit"); });
  }

  void TurnOn() {
    m_power->TurnOn([this](const std::string& failure) { m_told.push_back(failure); });
    Ready();
  }

  void Ready() { m_router.Call("daemon.ready", Json::objectValue, m_callers.Identify(m_pid)); }

  void Cycle() {
    const auto done = m_router.Begin("tv.power_cycle", Json::objectValue);
    RunUntil("the daemon's next start",
             [this] { return !m_steps.empty() && m_steps.back() == "daemon"; });
    EXPECT_FALSE(done());
    Ready();
    EXPECT_TRUE(done());
  }

  Json::Value Reset(const char* kind) {
    Json::Value request;
    request["kind"] = kind;
    return m_router.Call("reset", request);
  }

  support::TempDir m_dir;
  const DeskPaths m_paths{m_dir.Path()};
  MemoryRouter m_router;
  CallerTable m_callers;
  TvLog m_log{m_dir / "log"};
  std::unique_ptr<Keys> m_keys;
  std::unique_ptr<Supervisor> m_supervisor;
  std::unique_ptr<Power> m_power;
  pid_t m_pid = 0;
  std::vector<std::string> m_steps;
  std::vector<std::string> m_told;
};

using Steps = std::vector<std::string>;

TEST_F(PowerTest, ThePartsAreOnBeforeTheDaemonStarts) {
  Make(true);
  TurnOn();
  EXPECT_EQ(m_steps, (Steps{"on", "daemon"}));
  EXPECT_EQ(m_told, Steps{""});
}

TEST_F(PowerTest, NetworkTimeComesByItself) {
  Make(false);
  TurnOn();
  EXPECT_FALSE(m_keys->Get(NETWORK_TIME));
  RunUntil("network time", [this] { return m_keys->GetInt(NETWORK_TIME, 0) == 1; });
}

TEST_F(PowerTest, OfflineItDoesNot) {
  Make(true);
  TurnOn();
  const gint64 start = g_get_monotonic_time();
  RunUntil("one and a half seconds", [start] { return g_get_monotonic_time() - start > 1500000; });
  EXPECT_FALSE(m_keys->Get(NETWORK_TIME));
}

TEST_F(PowerTest, APowerCycleStopsTheDaemonFirstAndStartsItLast) {
  Make(true);
  TurnOn();
  m_steps.clear();
  Cycle();
  EXPECT_EQ(m_steps, (Steps{"off 1", "off 2", "on", "daemon"}));
}

TEST_F(PowerTest, APowerCycleDropsWhatIsNotKept) {
  Make(true);
  TurnOn();
  m_steps.clear();
  m_keys->Set("db/a", 1);
  m_keys->Set("memory/a", 1);
  m_keys->Set("rtc/a", 1);
  support::WriteFile(m_paths.Tmp() + "/hbb_ready", "");
  Cycle();
  EXPECT_TRUE(m_keys->Get("db/a"));
  EXPECT_FALSE(m_keys->Get("memory/a"));
  EXPECT_FALSE(m_keys->Get("rtc/a"));
  EXPECT_TRUE(support::Exists(m_paths.Tmp()));
  EXPECT_TRUE(support::ListTree(m_paths.Tmp()).empty());
}

TEST_F(PowerTest, APowerCycleSetsNetworkTimeAgain) {
  Make(false);
  TurnOn();
  RunUntil("network time", [this] { return m_keys->GetInt(NETWORK_TIME, 0) == 1; });
  m_steps.clear();
  Cycle();
  EXPECT_FALSE(m_keys->Get(NETWORK_TIME));
  RunUntil("network time", [this] { return m_keys->GetInt(NETWORK_TIME, 0) == 1; });
}

TEST_F(PowerTest, ASecondPowerCycleMeanwhileIsRefused) {
  Make(true);
  TurnOn();
  m_steps.clear();
  const auto done = m_router.Begin("tv.power_cycle", Json::objectValue);
  EXPECT_THROW(m_router.Begin("tv.power_cycle", Json::objectValue), DeskError);
  RunUntil("the daemon's next start",
           [this] { return !m_steps.empty() && m_steps.back() == "daemon"; });
  Ready();
  EXPECT_TRUE(done());
}

TEST_F(PowerTest, GoingDownAnswersWhenAllIsOffThenQuits) {
  Make(true);
  TurnOn();
  m_steps.clear();
  m_power->GoDown([this] { m_steps.push_back("done"); });
  m_power->GoDown([this] { m_steps.push_back("done too"); });
  RunUntil("the end", [this] { return !m_steps.empty() && m_steps.back() == "quit"; });
  EXPECT_EQ(m_steps, (Steps{"off 1", "off 2", "done", "done too", "quit"}));
  EXPECT_FALSE(m_supervisor->Describe()["running"].asBool());
}

TEST_F(PowerTest, AFactoryResetCountsUp) {
  Make(true);
  Reset("factory");
  Reset("factory");
  EXPECT_EQ(m_keys->GetInt("db/factory/factory_reset_count", -1), 2);
  EXPECT_EQ(m_keys->GetInt("db/factory/service_reset_count", -1), 0);
}

TEST_F(PowerTest, AServiceResetCountsUp) {
  Make(true);
  Reset("service");
  EXPECT_EQ(m_keys->GetInt("db/factory/factory_reset_count", -1), 0);
  EXPECT_EQ(m_keys->GetInt("db/factory/service_reset_count", -1), 1);
}

TEST_F(PowerTest, AResetOfTheAppsIsTold) {
  Make(true);
  Reset("apps");
  EXPECT_EQ(m_keys->GetInt("db/tellahub/reset/apps", -1), 0);
  ASSERT_EQ(m_router.Events("key").size(), 1U);
  EXPECT_EQ(m_router.Events("key")[0].body["key"].asString(), "db/tellahub/reset/apps");
}

TEST_F(PowerTest, AnUnknownResetIsRefused) {
  Make(true);
  EXPECT_THROW(Reset("all"), DeskError);
  EXPECT_TRUE(m_router.Events("key").empty());
}

}  // namespace
}  // namespace desk::tv
