// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// All threads of the daemon work on the same records at once. For ThreadSanitizer; the state
// afterwards is checked in any build.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "app_info/AppInfoCache.h"
#include "controller/ORVInstaller.h"
#include "controller/ORVScheduler.h"
#include "fake/control/fake.h"
#include "fault/daemon.h"
#include "fault/packages.h"
#include "fault/store.h"
#include "support/wait_for.h"

namespace {

#if defined(__SANITIZE_THREAD__)
constexpr int OPERATIONS = 100000;
#else
constexpr int OPERATIONS = 4000;
#endif
constexpr int TUNED = 103;
constexpr long QUEUE_LIMIT = 64;
/// The package manager's thread, two threads of the TV service, the web runtime.
constexpr int KINDS = 8;

/// An id of 40 characters: too long for a string without an allocation, so a torn copy is freed.
std::string LongId(const std::string& name) {
  std::string id = name;
  id.resize(40, 'x');
  return id;
}

std::vector<fake::Package> Packages() {
  std::vector<fake::Package> packages;
  for (const char* name : {"servicea", "serviceb"}) {
    packages.push_back(fault::ServiceFeeder(LongId(name), "extended"));
  }
  for (const char* screens : {"epg", "channel_list"}) {
    packages.push_back(fault::MakePackage(
        LongId(screens), {{"orv_type/custom_ui_extended", screens},
                          {"orv_type/ch_feeder_standard", "standard"},
                          {"orv_data/channel_data_url", "http://example.org/c.json"},
                          {"orv_data/schedule_data_url", "http://example.org/s.json"},
                          {"orv_data/ch.app.boosting", "true"}}));
  }
  return packages;
}

class Stress : public testing::Test {
 protected:
  Stress() : m_packages(Packages()) {
    fault::MakeFreshDirectories();
    fault::MakeTelevision();
    for (std::size_t i = 0; i < m_packages.size(); ++i) {
      fault::MakeKnown(m_packages[i]);
      fake::AddService(fake::MakeService(i + 1, m_packages[i].id));
    }
  }

  const fake::Package& At(int number) const {
    return m_packages[static_cast<std::size_t>(number) % m_packages.size()];
  }

  static void WaitForRoom() {
    EXPECT_TRUE(support::WaitFor(
        [] {
          return ORVInstaller::GetInstance()->GetQueue()->Size() < QUEUE_LIMIT &&
                 ORVScheduler::GetInstance()->GetQueue()->Size() < QUEUE_LIMIT;
        },
        "room in the tasks' queues"));
  }

  void Say(int number, const std::string& command) const {
    const std::string sender = At(number).id + ".Feed";
    fake::Incoming incoming;
    incoming.port = "orv_scheduler_command_port";
    incoming.app = sender.c_str();
    incoming.replyPort = "answers";
    incoming.message =
        fake::Strings({{"orv_scheduler_command", command}, {"expiration_time", "3600"}});
    EXPECT_TRUE(fake::SendMessage(incoming));
  }

  /// One event on the main loop.
  void Happen(int number) const {
    const int turn = number / KINDS;
    switch (number % KINDS) {
      case 0:
        fake::FirePackageEvent(At(turn).id, PACKAGE_MANAGER_EVENT_TYPE_INSTALL);
        return;
      case 1:
        fake::FirePackageEvent(At(turn + 1).id, PACKAGE_MANAGER_EVENT_TYPE_UPDATE);
        return;
      case 2:
        if (turn % 3 == 0) {
          fake::FirePackageEvent(At(turn / 3).id, PACKAGE_MANAGER_EVENT_TYPE_UNINSTALL);
        }
        return;
      case 3:
        Say(turn, "command_set_expiration_time");
        return;
      case 4:
        Say(turn, "command_complete_operation");
        return;
      case 5:
        fake::FireTimer(g_nSchedulerTimerID);
        return;
      case 6:
        fake::SetKey("rtc/memory/WebApp/" + At(turn).id + ".App",
                     turn % 2 == 0 ? "preload" : "quit");
        return;
      default:
        fake::SetKey("memory/was/app_install", LongId("widget"));
        if (turn % 50 == 0) {
          fake::SetKey("db/tellahub/reset/apps", 0);
        }
    }
  }

  void RunMainLoop() {
    for (int i = 0; i < OPERATIONS; ++i) {
      Happen(i);
      fake::DeliverKeyChanges();
      WaitForRoom();
      if (i % 100 == 0) {
        Forget();
      }
    }
    m_done = true;
  }

  static void Forget() {
    fake::ClearLog();
    fake::ClearLaunches();
    fake::ClearChannelRequests();
    fake::ClearSentMessages();
  }

  /// Threads of the TV-service library: tunes, concurrent with each other and the installer's task.
  void RunTunes(std::uint64_t first) const {
    for (std::uint64_t i = first; !m_done; ++i) {
      fake::FireTvSignal(TUNED, fake::Payload(i % 6));
      std::this_thread::yield();
    }
  }

  const std::vector<fake::Package> m_packages;
  std::atomic<bool> m_done{false};
};

TEST_F(Stress, OnAllThreadsLeavesAWholeStoreAndAWorkingDaemon) {
  ASSERT_TRUE(fault::RunDaemon([&] {
    fault::Settle();
    fake::SetRecording(false);
    fake::SetKey("memory/menu/network/set_time", 1);
    fault::Settle();
    std::thread first([&] { RunTunes(0); });
    std::thread second([&] { RunTunes(3); });
    RunMainLoop();
    first.join();
    second.join();
    fault::Settle();
    for (const fake::Package& package : m_packages) {
      fault::Uninstall(package.id);
    }
    EXPECT_EQ(fault::WhatIsWrongWithTheStore(), std::vector<std::string>());
    EXPECT_EQ(fault::StoredPackages(), std::vector<std::string>());
    const fake::Package fresh = fault::WebFeeder("freshpacka");
    fault::Install(fresh);
    EXPECT_EQ(fault::StoredPackages(), std::vector<std::string>{"freshpacka"});
  }));
}

}  // namespace
