// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/supervisor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "desk/tv/process.h"
#include "memory_router.h"
#include "support/files.h"

namespace desk::tv {
namespace {

SupervisorTimes QuickTimes() {
  SupervisorTimes times;
  times.stopGrace = 300;
  times.firstDelay = 50;
  times.longestDelay = 200;
  return times;
}

// The daemons are shells that run the test's commands; not they but the test reports that they are
// ready.
class Supervision : public testing::Test {
 protected:
  ~Supervision() override { m_supervisor.reset(); }

  void Make(SupervisorTimes times = QuickTimes()) {
    m_supervisor = std::make_unique<Supervisor>(
        m_router, m_callers, m_log, [this] { return Launch(); }, times);
  }

  DaemonProcess Launch() {
    ++m_launches;
    if (!m_refusal.empty()) {
      throw DeskError(DeskError::FAILED, m_refusal);
    }
    ProcessSpec spec;
    spec.arguments = {"sh", "-c", m_script};
    spec.output = m_dir / "output";
    DaemonProcess process;
    process.pid = StartProcess(spec);
    process.sandboxed = m_sandboxed;
    process.output = spec.output;
    m_pid = process.pid;
    return process;
  }

  void Ready() { m_router.Call("daemon.ready", Json::objectValue, m_callers.Identify(m_pid)); }

  void StartAndBeReady() {
    m_supervisor->Start([this](const std::string& failure) { m_told.push_back(failure); });
    Ready();
  }

  std::string State() const { return m_supervisor->Describe()["state"].asString(); }
  void WaitForState(const std::string& state) {
    RunUntil("the state " + state, [&] { return State() == state; });
  }

  std::vector<std::string> ToldStates() const {
    std::vector<std::string> states;
    for (const auto& event : m_router.Events("daemon")) {
      states.push_back(event.body["state"].asString());
    }
    return states;
  }

  support::TempDir m_dir;
  MemoryRouter m_router;
  CallerTable m_callers;
  TvLog m_log{m_dir / "log"};
  std::string m_script = "exec sleep 1000";
  std::string m_refusal;
  bool m_sandboxed = false;
  int m_launches = 0;
  pid_t m_pid = 0;
  std::vector<std::string> m_told;
  std::unique_ptr<Supervisor> m_supervisor;
};

using States = std::vector<std::string>;

TEST_F(Supervision, BeforeTheFirstStartNothingRuns) {
  Make();
  EXPECT_EQ(State(), "exited");
  EXPECT_FALSE(m_supervisor->Describe()["running"].asBool());
  EXPECT_EQ(m_supervisor->Describe()["restarts"].asInt(), 0);
}

TEST_F(Supervision, AStartIsDoneWhenTheDaemonSaysThatItIsReady) {
  Make();
  m_supervisor->Start([this](const std::string& failure) { m_told.push_back(failure); });
  EXPECT_EQ(State(), "starting");
  EXPECT_TRUE(m_told.empty());
  Ready();
  EXPECT_EQ(State(), "ready");
  EXPECT_EQ(m_told, States{""});
  EXPECT_EQ(m_supervisor->Describe()["pid"].asInt(), m_pid);
  EXPECT_EQ(ToldStates(), (States{"starting", "ready"}));
}

TEST_F(Supervision, NobodyElseMaySayThatItIsReady) {
  Make();
  m_supervisor->Start([](const std::string&) {});
  EXPECT_THROW(m_router.Call("daemon.ready"), DeskError);
  EXPECT_EQ(State(), "starting");
}

TEST_F(Supervision, AStartOfADaemonThatRunsIsDoneAtOnce) {
  Make();
  StartAndBeReady();
  m_supervisor->Start([this](const std::string& failure) { m_told.push_back(failure); });
  EXPECT_EQ(m_told, (States{"", ""}));
  EXPECT_EQ(m_launches, 1);
}

TEST_F(Supervision, AStopIsDoneWhenTheDaemonIsGone) {
  Make();
  StartAndBeReady();
  m_supervisor->Stop([this](const std::string& failure) { m_told.push_back("stopped" + failure); });
  EXPECT_EQ(m_told, States{""});
  EXPECT_EQ(State(), "stopping");
  WaitForState("exited");
  EXPECT_EQ(m_told, (States{"", "stopped"}));
  EXPECT_EQ(m_supervisor->Describe()["reason"].asString(), "signal 15 (Terminated)");
  EXPECT_EQ(m_supervisor->Describe()["restarts"].asInt(), 0);
  EXPECT_EQ(m_launches, 1);
}

TEST_F(Supervision, ADaemonThatDoesNotStopIsKilled) {
  m_script = "trap '' TERM; echo deaf; while :; do sleep 1; done";
  Make();
  StartAndBeReady();
  RunUntil("the trap", [this] {
    return support::Exists(m_dir / "output") && support::ReadFile(m_dir / "output") == "deaf\n";
  });
  m_router.Call("daemon.stop");
  EXPECT_EQ(m_supervisor->Describe()["reason"].asString(), "signal 9 (Killed)");
}

TEST_F(Supervision, StoppingWhatDoesNotRunIsDone) {
  Make();
  EXPECT_EQ(m_router.Call("daemon.stop"), Json::Value(Json::objectValue));
}

TEST_F(Supervision, ADaemonThatWasKilledIsStartedAgainAndCounted) {
  Make();
  StartAndBeReady();
  const pid_t first = m_pid;
  EXPECT_EQ(m_router.Call("daemon.kill")["pid"].asInt(), first);
  RunUntil("the second daemon", [this] { return m_launches == 2; });
  EXPECT_NE(m_pid, first);
  Ready();
  EXPECT_EQ(m_supervisor->Describe()["restarts"].asInt(), 1);
  EXPECT_EQ(ToldStates(),
            (States{"starting", "ready", "exited", "restarting", "starting", "ready"}));
  EXPECT_EQ(m_router.Events("daemon")[2].body["reason"].asString(), "signal 9 (Killed)");
}

TEST_F(Supervision, TheReasonOfTheLastEndStaysWhileTheNextDaemonRuns) {
  Make();
  StartAndBeReady();
  EXPECT_EQ(m_supervisor->Describe()["reason"].asString(), "");
  m_router.Call("daemon.kill");
  RunUntil("the second daemon", [this] { return m_launches == 2; });
  Ready();
  EXPECT_EQ(State(), "ready");
  EXPECT_EQ(m_supervisor->Describe()["reason"].asString(), "signal 9 (Killed)");
}

TEST_F(Supervision, KillingWhatDoesNotRunIsNotFound) {
  Make();
  EXPECT_THROW(m_router.Call("daemon.kill"), DeskError);
}

TEST_F(Supervision, ADaemonThatEndsBeforeItIsReadyFailsTheStartWithItsLastWords) {
  m_script = "echo something; echo no luck >&2; exit 4";
  Make();
  try {
    m_router.Call("daemon.start");
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), "Failed");
    EXPECT_STREQ(e.what(),
                 "the daemon ended before its main loop ran (exit status 4), its last output: no "
                 "luck; see `tv log`");
  }
}

TEST_F(Supervision, ASandboxThatCannotBeSetUpNamesTheOptionWithoutIt) {
  m_script = "echo 'bwrap: No permissions to create new namespace' >&2; exit 1";
  Make();
  try {
    m_router.Call("daemon.start");
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_STREQ(
        e.what(),
        "the daemon's sandbox cannot be set up here (bwrap: No permissions to create new "
        "namespace); allow user namespaces, or run the daemon without a sandbox with `tv up "
        "--no-sandbox`");
  }
}

TEST_F(Supervision, ADaemonThatEndsWithStatus0BeforeItIsReadyIsStartedAgain) {
  m_script = "exit 0";
  Make();
  m_supervisor->Start([this](const std::string& failure) { m_told.push_back(failure); });
  RunUntil("the second start", [this] { return m_launches == 2; });
  ASSERT_EQ(m_told.size(), 1U);
  EXPECT_NE(m_told[0].find("exit status 0"), std::string::npos);
}

TEST_F(Supervision, ADaemonThatKeepsDyingIsStartedMoreAndMoreSlowly) {
  m_script = "exit 1";
  Make();
  m_supervisor->Start([](const std::string&) {});
  RunUntil("five starts", [this] { return m_launches == 5; });
  const std::string log = support::ReadFile(m_dir / "log");
  EXPECT_NE(log.find("died 2 times in a row soon after its start: the next start is in 50 ms"),
            std::string::npos);
  EXPECT_NE(log.find("died 3 times in a row soon after its start: the next start is in 100 ms"),
            std::string::npos);
  EXPECT_NE(log.find("died 4 times in a row soon after its start: the next start is in 200 ms"),
            std::string::npos);
}

TEST_F(Supervision, AKilledDaemonIsStartedAtOnceHoweverOften) {
  SupervisorTimes times = QuickTimes();
  times.firstDelay = times.longestDelay = 1000000;
  Make(times);
  StartAndBeReady();
  for (int kills = 1; kills <= 4; ++kills) {
    m_router.Call("daemon.kill");
    RunUntil("the next start", [this, kills] { return m_launches == kills + 1; });
  }
}

TEST_F(Supervision, AStopEndsTheWaitForTheNextStart) {
  m_script = "exit 1";
  SupervisorTimes times = QuickTimes();
  times.firstDelay = times.longestDelay = 1000000;
  Make(times);
  m_supervisor->Start([](const std::string&) {});
  RunUntil("the long wait", [this] { return m_launches == 2 && State() == "restarting"; });
  m_router.Call("daemon.stop");
  EXPECT_EQ(State(), "exited");
  m_script = "exec sleep 1000";
  StartAndBeReady();
  EXPECT_EQ(State(), "ready");
}

TEST_F(Supervision, AStartEndsTheWaitForTheNextStart) {
  m_script = "exit 1";
  SupervisorTimes times = QuickTimes();
  times.firstDelay = times.longestDelay = 1000000;
  Make(times);
  m_supervisor->Start([](const std::string&) {});
  RunUntil("the long wait", [this] { return m_launches == 2 && State() == "restarting"; });
  m_script = "exec sleep 1000";
  StartAndBeReady();
  EXPECT_EQ(State(), "ready");
  EXPECT_EQ(m_launches, 3);
}

TEST_F(Supervision, AStopWhileTheDaemonStartsFailsTheStart) {
  Make();
  m_supervisor->Start([this](const std::string& failure) { m_told.push_back(failure); });
  m_router.Call("daemon.stop");
  EXPECT_EQ(m_told, States{"the daemon was stopped before it was ready"});
}

TEST_F(Supervision, AStartWhileTheDaemonStopsWaitsAndStartsAnother) {
  Make();
  StartAndBeReady();
  m_supervisor->Stop([](const std::string&) {});
  m_supervisor->Start([this](const std::string& failure) { m_told.push_back(failure); });
  RunUntil("the second start", [this] { return m_launches == 2; });
  Ready();
  EXPECT_EQ(m_told, (States{"", ""}));
}

TEST_F(Supervision, ARestartIsAStopAndAStartAndNotCounted) {
  Make();
  StartAndBeReady();
  const pid_t first = m_pid;
  const auto done = m_router.Begin("daemon.restart", Json::objectValue);
  RunUntil("the second start", [this] { return m_launches == 2; });
  EXPECT_FALSE(done());
  Ready();
  EXPECT_TRUE(done());
  EXPECT_NE(m_pid, first);
  EXPECT_EQ(m_supervisor->Describe()["restarts"].asInt(), 0);
}

TEST_F(Supervision, AProgramThatCannotBeStartedFailsTheStart) {
  m_refusal = "no daemon to run";
  Make();
  m_supervisor->Start([this](const std::string& failure) { m_told.push_back(failure); });
  EXPECT_EQ(m_told, States{"no daemon to run"});
  EXPECT_EQ(State(), "exited");
  EXPECT_EQ(m_launches, 1);
}

TEST_F(Supervision, ASilentDaemonIsKilledAndStartedAgain) {
  Make();
  StartAndBeReady();
  Json::Value request;
  request["seconds"] = 1;
  m_router.Call("watchdog.register", request, m_callers.Identify(m_pid));
  RunUntil("the second start", [this] { return m_launches == 2; });
  EXPECT_EQ(m_router.Events("daemon")[2].body["reason"].asString(),
            "killed by the watchdog after 1000 ms of silence");
}

TEST_F(Supervision, ADaemonThatSpeaksIsLeftAlone) {
  Make();
  StartAndBeReady();
  const Caller daemon = m_callers.Identify(m_pid);
  Json::Value request;
  request["seconds"] = 1;
  m_router.Call("watchdog.register", request, daemon);
  const gint64 start = g_get_monotonic_time();
  gint64 last = start;
  RunUntil("two seconds with a word every now and then", [&] {
    if (g_get_monotonic_time() - last > 200000) {
      last = g_get_monotonic_time();
      m_router.Call("watchdog.notify", Json::objectValue, daemon);
    }
    return last - start > 2000000;
  });
  EXPECT_EQ(m_launches, 1);
}

TEST_F(Supervision, WithoutRegistrationSilenceIsFine) {
  Make();
  StartAndBeReady();
  m_router.Call("watchdog.notify", Json::objectValue, m_callers.Identify(m_pid));
  EXPECT_EQ(State(), "ready");
}

TEST_F(Supervision, TheWatchdogIsForTheDaemonAndForTimesAboveZero) {
  Make();
  StartAndBeReady();
  Json::Value request;
  request["seconds"] = 1;
  EXPECT_THROW(m_router.Call("watchdog.register", request), DeskError);
  EXPECT_THROW(m_router.Call("watchdog.notify"), DeskError);
  request["seconds"] = 0;
  EXPECT_THROW(m_router.Call("watchdog.register", request, m_callers.Identify(m_pid)), DeskError);
}

TEST_F(Supervision, AFasterClockShortensTheSilenceButNotBelowTheFloor) {
  SupervisorTimes times = QuickTimes();
  times.speed = 1000;
  times.watchdogFloor = 300;
  Make(times);
  StartAndBeReady();
  Json::Value request;
  request["seconds"] = 120;
  m_router.Call("watchdog.register", request, m_callers.Identify(m_pid));
  RunUntil("the second start", [this] { return m_launches == 2; });
  EXPECT_EQ(m_router.Events("daemon")[2].body["reason"].asString(),
            "killed by the watchdog after 300 ms of silence");
}

TEST_F(Supervision, ASignalThatTheSandboxPassesOnIsToldAsOne) {
  m_sandboxed = true;
  m_script = "exit 139";
  Make();
  m_supervisor->Start([this](const std::string& failure) { m_told.push_back(failure); });
  RunUntil("the end", [this] { return !m_told.empty(); });
  EXPECT_NE(m_told[0].find("signal 11 (Segmentation fault)"), std::string::npos) << m_told[0];
}

TEST_F(Supervision, TheDaemonsPidIsTheOneThatTheSandboxTells) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  ProcessSpec spec;
  spec.arguments = {"sleep", "1000"};
  const pid_t inner = StartProcess(spec);
  const std::string info = "{\n    \"child-pid\": " + std::to_string(inner) + "\n}\n";
  ASSERT_EQ(write(ends[1], info.data(), info.size()), static_cast<ssize_t>(info.size()));
  close(ends[1]);
  // Like the sandbox, it ends when the process in it has ended.
  m_script = "while kill -0 " + std::to_string(inner) + "; do sleep 0.01; done";
  m_supervisor = std::make_unique<Supervisor>(
      m_router, m_callers, m_log,
      [&] {
        DaemonProcess process = Launch();
        process.sandboxed = true;
        process.infoFd = ends[0];
        return process;
      },
      QuickTimes());
  m_supervisor->Start([](const std::string&) {});
  EXPECT_EQ(m_supervisor->Describe()["pid"].asInt(), inner);
  int status = 0;
  m_supervisor->Stop([](const std::string&) {});
  ASSERT_EQ(waitpid(inner, &status, 0), inner);
  EXPECT_EQ(DescribeStatus(status), "signal 15 (Terminated)");
  WaitForState("exited");
}

TEST_F(Supervision, TheEndOfTheTelevisionEndsTheDaemon) {
  Make();
  StartAndBeReady();
  const pid_t daemon = m_pid;
  m_supervisor.reset();
  RunUntil("the daemon's end", [daemon] { return kill(daemon, 0) != 0; });
}

}  // namespace
}  // namespace desk::tv
