// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fuzz/daemon_world.h"

#include <exception>
#include <filesystem>

#include "fake/control/fake.h"
#include "support/files.h"

namespace fuzz {

namespace fs = std::filesystem;

const std::string DATA_DIRECTORY = "/opt/usr/apps/com.kalmora.tv.orv-enabler/data/";
const std::string SHARED_DATA_DIRECTORY = "/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data/";

void MakeWorld() {
  support::MakeDirectories(DATA_DIRECTORY);
  support::MakeDirectories(SHARED_DATA_DIRECTORY);
  fake::SetRecording(false);
  fake::SetTime(1700000000);
  fake::SetWaits(fake::Waits::TimeOut);
  fake::StoreKey("db/orv_channel/custom_ui_type", "");
}

void ForgetInput() {
  for (const auto& entry : fs::directory_iterator(SHARED_DATA_DIRECTORY)) {
    fs::remove_all(entry.path());
  }
  fake::DropKeyChanges();
  fake::ClearLog();
  fake::ClearLaunches();
  fake::ClearChannelRequests();
  fake::ClearSentMessages();
  for (const fake::Mount& mount : fake::Mounts()) {
    fs::remove_all(mount.directory);
  }
  fake::StoreKey("db/orv_channel/custom_ui_type", "");
}

void Contain(const std::function<void()>& call) try { call(); } catch (const std::exception&) {
  // The daemon logs one line.
}

}  // namespace fuzz
