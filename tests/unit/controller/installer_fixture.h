// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "controller/ORVInstaller.h"
#include "fake/control/fake.h"
#include "support/files.h"
#include "support/log_matchers.h"
#include "support/wait_for.h"
#include "unit/controller/gate.h"
#include "unit/controller/recording_app.h"

/// A daemon without its main(): its directories, and the installer when a test requests it.
/// Events are passed to t_OnEvent() on the test's thread, which then acts as the task's.
class InstallerTest : public testing::Test {
 protected:
  InstallerTest() {
    support::MakeDirectories(DATA_DIRECTORY);
    support::MakeDirectories("/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data");
  }

  /// The instance, after its own thread has completed t_Create(); calls and log records so far
  /// are cleared.
  ORVInstaller& Installer() {
    ORVInstaller* installer = ORVInstaller::GetInstance();
    if (!m_started) {
      m_started = true;
      EXPECT_TRUE(support::WaitFor([] { return fake::CallCount("FCStateAlarm::Create") == 1; },
                                   "the end of t_Create()"));
      fake::ClearCalls();
      fake::ClearLog();
      RecordingApp::ClearOperations();
    }
    return *installer;
  }

  bool Handle(int type, void* payload = nullptr) {
    FSEvent event;
    event.pReceiver = &Installer();
    event.type = static_cast<unsigned int>(type);
    event.P0 = payload;
    return Installer().t_OnEvent(&event);
  }

  bool HandlePackageEvent(int type, const std::string& package) {
    return Handle(type, new std::string(package));  // the handler owns it
  }

  /// Waits until the task has handled what was posted before.
  void Drain() {
    FSEvent event;
    event.pReceiver = &Installer();
    event.type = 999;
    ASSERT_TRUE(Installer().Send(event, false, true));
  }

  static std::string DataFile(const std::string& name) { return DATA_DIRECTORY + name; }
  /// Lets nothing be created in it. Not for a test that still uses the store.
  static void RemoveDataDirectory() { std::filesystem::remove_all(DATA_DIRECTORY); }

 private:
  inline static const std::string DATA_DIRECTORY = "/opt/usr/apps/com.kalmora.tv.orv-enabler/data/";
  bool m_started = false;
};
