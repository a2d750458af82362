// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Packaged data as the two feeder types use it.
namespace ChFeederPackagedData {

/// FileSystemUtils::UninstallPackagedData() within an update: an exception is logged and ends here,
/// because the rest of the update has to follow. iDataType is a set of PackagedDataType bits.
void RemoveForUpdate(const std::string& rPackageID, const std::string& rAppType, int iDataType);

}  // namespace ChFeederPackagedData
