// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/ChFeederPackagedData.h"

#include <exception>

#include "common/Log.h"
#include "utils/PackagedData.h"

void ChFeederPackagedData::RemoveForUpdate(const std::string& rPackageID,
                                           const std::string& rAppType, int iDataType) try {
  FileSystemUtils::UninstallPackagedData(rPackageID, rAppType, iDataType);
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}
