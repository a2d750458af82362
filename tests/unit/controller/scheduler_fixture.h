// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "controller/ORVScheduler.h"
#include "fake/control/fake.h"
#include "support/files.h"
#include "support/log_matchers.h"
#include "support/wait_for.h"
#include "unit/controller/recording_app.h"

/// A scheduler without the rest of the daemon. Events are passed to t_OnEvent() on the test's
/// thread, which then acts as the task's. The store is not open.
class SchedulerTest : public testing::Test {
 protected:
  static constexpr time_t NOW = 1700000000;  // 2023-11-14T22:13:20Z
  static constexpr unsigned int TICK_MS = 720 * 1000;

  SchedulerTest() {
    fake::SetTime(NOW);
    fake::ClearCalls();  // static initialisers have already read their paths
  }

  /// The instance, without network time and with nothing in its queue; calls and log records so far
  /// are cleared.
  ORVScheduler& Scheduler() {
    ORVScheduler* scheduler = ORVScheduler::GetInstance();
    if (!m_started) {
      m_started = true;
      Drain();
      Forget();
    }
    return *scheduler;
  }

  /// Sets network time and waits until the resulting start is handled.
  ORVScheduler& StartedScheduler() {
    Scheduler();
    fake::SetKey("memory/menu/network/set_time", 1);
    fake::DeliverKeyChanges();
    Drain();
    return Scheduler();
  }

  static void Forget() {
    fake::ClearCalls();
    fake::ClearLog();
    fake::ClearLaunches();
  }

  bool Handle(int type) {
    FSEvent event;
    event.pReceiver = &Scheduler();
    event.type = static_cast<unsigned int>(type);
    return Scheduler().t_OnEvent(&event);
  }

  /// Waits until the task has handled what was posted before.
  void Drain() {
    FSEvent event;
    event.pReceiver = ORVScheduler::GetInstance();
    event.type = 999;
    ASSERT_TRUE(ORVScheduler::GetInstance()->Send(event, false, true));
  }

  /// Makes the record's service app the current one, due and running with the pid.
  void MakeCurrent(RecordingApp& app, pid_t pid = 4711) {
    Scheduler();
    AppInfoCache::GetInstance()->ClearSchedulingList();
    AppInfoCache::GetInstance()->AddSchedulingItem(app.m_sPackageID);
    ASSERT_TRUE(Scheduler().LaunchNextItem());
    fake::SetRunning(app.m_sServiceID, pid);
    Forget();
  }

  static std::vector<std::string> LaunchedApps() {
    std::vector<std::string> apps;
    for (const fake::Launch& launch : fake::Launches()) {
      apps.push_back(launch.app);
    }
    return apps;
  }
  static std::vector<pid_t> KilledPids() {
    std::vector<pid_t> pids;
    for (const fake::Kill& kill : fake::Kills()) {
      pids.push_back(kill.pid);
    }
    return pids;
  }
  /// Posts of the daemon; the fixture's own are synchronous.
  static std::vector<std::string> Sent() {
    std::vector<std::string> sent;
    for (const fake::Call& call : fake::Calls("FCTask::Send")) {
      if (call.args.back() == "false") {
        sent.push_back(call.args.at(1));
      }
    }
    return sent;
  }

 private:
  bool m_started = false;
};

/// A record with a service app.
class CustomFeeder {
 public:
  explicit CustomFeeder(const std::string& package, const std::string& due = "") : record(package) {
    record.Put("orv_type", "ch_feeder_custom", "x");
    record.Put("orv_data", "expiration_date_str", due);
  }
  RecordingApp record;
};
