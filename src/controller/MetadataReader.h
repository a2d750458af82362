// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <app_info.h>
#include <package_info.h>

#include <optional>
#include <string>

#include "app_info/AppInfo.h"

/// Reads a package from the platform: its applications, its version and the keys of its metadata.
/// The platform calls the callbacks within the calling function. Failures are log lines.
namespace MetadataReader {

/// Calls pfnAppCB with each application of the package, then sets the version. User data of the
/// callback is rInfo, whose package id the caller has set.
bool GetPackageInfo(AppBaseInfo& rInfo, package_info_app_cb pfnAppCB);

/// One application of the package: enters its id in rInfo and calls pfnMetadataCB with each entry
/// of its metadata. User data of the callback is rInfo. False ends the walk of the applications.
bool ReadApplication(AppBaseInfo& rInfo, package_info_app_component_type_e eType,
                     const char* pAppID, app_info_metadata_cb pfnMetadataCB);

/// A key of the metadata without its prefix.
struct Key {
  const std::string* pCategory;  ///< METADATA_ORV_TYPE or METADATA_ORV_DATA
  std::string sName;             ///< type name or data key
};

/// Nothing, with a log line, for a key of others. Throws std::out_of_range when the key ends with
/// the word of its category (docs/behaviour.md, "Creation").
std::optional<Key> ParseKey(const std::string& rKey);

}  // namespace MetadataReader
