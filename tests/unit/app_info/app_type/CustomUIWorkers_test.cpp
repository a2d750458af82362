// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// Two workers of the screens' layers at once: what they share, and what separates them.
#include <app_control.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <boost/filesystem.hpp>
#include <mutex>
#include <thread>

#include "app_info/app_type/CustomUIExtended.h"
#include "fake/control/apps.h"
#include "fake/control/clock.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"
#include "layers.h"
#include "support/files.h"
#include "support/other_thread.h"
#include "support/wait_for.h"

namespace {

using support::WaitFor;
using testing::ElementsAre;

const std::string FILE_NAME = "/opt/share/orv_ch/replacement_ui_info.json";

/// A layer that is running on another thread.
class Runner {
 public:
  explicit Runner(AppInfo& layer)
      : m_thread([this, &layer] {
          layer.RunOperation(true);
          m_returned = true;
        }) {}
  /// Ends a wait that should have ended already, so that no test hangs.
  ~Runner() {
    EXPECT_TRUE(WaitFor([this] { return m_returned.load(); }, "the end of a run"));
    if (!m_returned) {
      fake::AdvanceWaits(60000);
    }
    m_thread.join();
  }
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

 private:
  std::atomic<bool> m_returned{false};
  std::thread m_thread;
};

class CustomUIWorkers : public testing::Test {
 protected:
  CustomUIWorkers() {
    fake::StoreKey("db/orv_channel/custom_ui_type", std::string());
    support::WriteFile(FILE_NAME, "{\"appid\":\"layout\"}");
    fake::SetWaits(fake::Waits::Manual);
  }
  ~CustomUIWorkers() override { boost::filesystem::remove_all("/opt/share/orv_ch"); }

  static layers::Chain<CustomUIExtended> Make(const std::string& app, const std::string& screen) {
    auto layer =
        layers::Decorate<CustomUIExtended>(layers::NewRecord("org.example." + app, app), screen);
    layers::Apply(*layer, "custom_ui_cold_boot_opt", "background_img");
    return layer;
  }
  static testing::AssertionResult Waiting(std::size_t count) {
    return WaitFor([count] { return fake::WaitingThreads() == count; },
                   std::to_string(count) + " waiting workers");
  }
  /// Records what a worker does, and whether the mutex was free then. Another worker must be
  /// waiting: it counts only while no thread holds the mutex.
  void WatchTheMutex() {
    fake::SetOperationHook([this](const std::string&, const std::string& app) { Note(app); });
    fake::SetLaunchHook([this](const fake::Launch&) {
      Note("launch");
      return 0;
    });
  }
  std::vector<std::string> Notes() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_notes;
  }

  const layers::Chain<CustomUIExtended> m_first = Make("first", "epg");
  const layers::Chain<CustomUIExtended> m_second = Make("second", "channel_list");

 private:
  void Note(const std::string& what) {
    const bool isFree = fake::WaitingThreads() == 1;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_notes.push_back(what + (isFree ? ", free" : ", held"));
  }

  std::mutex m_mutex;
  std::vector<std::string> m_notes;  // guarded by m_mutex
};

TEST_F(CustomUIWorkers, OneStatusWakesAllThatWait) {
  const Runner first(*m_first);
  const Runner second(*m_second);
  ASSERT_TRUE(Waiting(2));
  CustomUIExtended::OnAppStatusChanged(3, m_first.get());
}

TEST_F(CustomUIWorkers, AWaitThatTimesOutLeavesTheMarkForTheOtherOne) {
  const Runner first(*m_first);
  ASSERT_TRUE(Waiting(1));
  fake::SetWaits(fake::Waits::TimeOut);
  m_second->RunOperation(true);
  ASSERT_TRUE(Waiting(1));
  // Without the mark no worker would be notified.
  CustomUIExtended::OnAppStatusChanged(4, m_second.get());
}

TEST_F(CustomUIWorkers, TheMutexIsHeldUntilTheWaitAndFreeAtTheHandOver) {
  const Runner first(*m_first);
  ASSERT_TRUE(Waiting(1));
  WatchTheMutex();
  fake::SetWaits(fake::Waits::TimeOut);
  m_second->RunOperation(true);
  EXPECT_THAT(Notes(), ElementsAre("layout, held", "launch, held", "second, free"));
  fake::SetOperationHook(nullptr);
  CustomUIExtended::OnAppStatusChanged(4, m_first.get());
}

TEST_F(CustomUIWorkers, AfterAFailedPreloadTheMutexIsHeldAtTheHandOverToo) {
  const Runner first(*m_first);
  ASSERT_TRUE(Waiting(1));
  WatchTheMutex();
  fake::QueueLaunchResults({APP_CONTROL_ERROR_APP_NOT_FOUND});
  m_second->RunOperation(true);
  EXPECT_THAT(Notes(), ElementsAre("layout, held", "launch, held", "second, held"));
  EXPECT_EQ(fake::WaitingThreads(), 1u);  // and is free again
  fake::SetOperationHook(nullptr);
  CustomUIExtended::OnAppStatusChanged(4, m_first.get());
}

/// The values are too long for a string without an allocation.
TEST(CustomUIStates, AnAppMayQuitWhileAnUpdateChangesItsScreens) {
  constexpr int ROUNDS = 300;
  const std::string values[] = {"channel_list,epg,and.a.screen.that.is.unknown",
                                "epg,channel_list,and.another.screen.that.is.unknown"};
  const auto ui = layers::Decorate<CustomUIExtended>(values[0]);
  // Without a replacement file every worker ends at once.
  support::OtherThread mainLoop([&ui] {
    for (int i = 0; i < ROUNDS; ++i) {
      CustomUIExtended::OnAppStatusChanged(6, ui.get());
    }
  });
  for (int i = 1; !mainLoop.Done(); ++i) {
    layers::StageValue(*ui, values[i % 2]);
    ui->UpdateOperation();
  }
  mainLoop.Join();
  for (const std::string& text : fake::LogTexts()) {
    if (text.rfind("[Info] rMetadataValue : ", 0) != 0) {
      continue;
    }
    EXPECT_THAT(text, testing::AnyOf(testing::EndsWith(" : " + values[0]),
                                     testing::EndsWith(" : " + values[1])));
  }
}

}  // namespace
