// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <package_manager.h>

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// Installed packages, and the events of the package manager.
namespace fake {

struct App {
  std::string id;
  package_info_app_component_type_e component = PACKAGE_INFO_UIAPP;
  /// In the order of the manifest. A key may occur twice.
  std::vector<std::pair<std::string, std::string>> metadata;
};

struct Package {
  std::string id;
  std::string version = "1.0.0";
  std::vector<App> apps;
};

/// Adds or replaces, without an event. Open handles keep their snapshot.
void AddPackage(const Package& package);
/// False when the package does not exist.
bool RemovePackage(const std::string& id);

/// Calls the callback of every handle that has one, on the calling thread. Returns how many ran.
std::size_t FirePackageEvent(
    const std::string& package, package_manager_event_type_e type,
    package_manager_event_state_e state = PACKAGE_MANAGER_EVENT_STATE_COMPLETED, int progress = 100,
    package_manager_error_e error = PACKAGE_MANAGER_ERROR_NONE, const std::string& kind = "wgt");

/// The present number of handles with a callback.
std::size_t PackageEventCallbacks();

}  // namespace fake
