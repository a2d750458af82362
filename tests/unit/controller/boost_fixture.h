// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "unit/controller/installer_fixture.h"

constexpr std::uint64_t SERVICE = 0x1122334455667788;

/// A daemon on a TV whose service SERVICE belongs to the package "p".
class BoostTest : public InstallerTest {
 protected:
  void SetUp() override { Installer(); }

  std::string BoostFlag() const { return DataFile("hbb_boost"); }
  void MakeBoostFlag() { support::WriteFile(BoostFlag(), ""); }
  static std::vector<std::string> LaunchedApps() {
    std::vector<std::string> apps;
    for (const fake::Launch& launch : fake::Launches()) {
      apps.push_back(launch.app);
    }
    return apps;
  }
  /// A service of the package, and a record that says whether it boosts.
  void AddBoostingService(const std::string& value) {
    m_app.Put("orv_data", "ch.app.boosting", value);
    fake::AddService(fake::MakeService(SERVICE, "p"));
  }

  RecordingApp m_app{"p"};
};
