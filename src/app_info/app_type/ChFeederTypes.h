// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// What the two feeder types have in common.
namespace ChFeederTypes {

/// FileSystemUtils::UninstallPackagedData() for an update: what it throws is logged and ends here,
/// since the rest of the update has to follow. iDataType is a set of PackagedDataType bits.
void UninstallPackagedData(const std::string& rPackageID, const std::string& rAppType,
                           int iDataType);

}  // namespace ChFeederTypes
