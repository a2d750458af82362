// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// What the installer task does with a package that was installed, updated or uninstalled.
///
/// Called on the task's thread. A failure is a log line; nothing is retried.
namespace PackageEvents {

/// Creates the record of a channel-bound app and runs it. Other packages are a log line.
void Install(const std::string& rPackageID);
/// Adapts the record to the new package and runs its update. A package without a record is
/// installed; one that is not a channel-bound app any more is uninstalled.
void Update(const std::string& rPackageID);
/// Stops the record, then removes it. Harmless for a package without a record.
void Uninstall(const std::string& rPackageID);

}  // namespace PackageEvents
