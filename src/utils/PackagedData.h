// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Kinds of packaged data; a set of these bits is passed as int.
enum PackagedDataType {
  PACKAGED_TYPE_HBBTV_APP = 1,  ///< the app tree, unpacked under the hbbtv directory
  PACKAGED_TYPE_META_DATA = 2,  ///< metadata files, moved to the metadata directory
};

/// Data that a package contains in a mountable image: unpacked once, shared by the package's app
/// types, removed with the last of them. A list file in the unpacked tree names the types.
///
/// All state is on disk, and all packages share one mount point. InstallPackagedData() and
/// UninstallPackagedData() may be called on any thread and run one at a time: they share a mutex,
/// which they hold to their end, platform calls included. The other two functions take no lock.
namespace FileSystemUtils {

/// True when the data is in place and rAppType is listed, or when there was nothing to do. A tree
/// that exists counts as installed and is not refreshed; with bStarted (a run at daemon start) its
/// list is not changed either. The archive is always unpacked whole; of rDataType only
/// PACKAGED_TYPE_META_DATA matters here. A failure undoes the mount only: unpacked files stay, and
/// a later call takes them for an installed tree. An exception ends the install with false and
/// leaves the mount in place.
bool InstallPackagedData(const std::string& rPackageID, const std::string& rWidgetID,
                         const std::string& rAppType, const int& rDataType, bool bStarted);

/// Takes rAppType off the list, and removes the tree with the last type. PACKAGED_TYPE_META_DATA
/// removes the metadata even if other types use it. Throws what JsonCpp throws on a list file that
/// is JSON but not a list of texts.
void UninstallPackagedData(const std::string& rPackageID, const std::string& rAppType,
                           const int& rDataType);

/// Adds rAppType to a list file unless it is there. With bCreate a missing or unreadable file is
/// created. Throws as UninstallPackagedData() does.
bool AddAppTypeToFile(const std::string& sFilePath, const std::string& rAppType, bool bCreate);

/// Unmounts through the mount service. The result is only logged, and the directory stays.
void Unmount(const std::string& sMountedDir);

}  // namespace FileSystemUtils
