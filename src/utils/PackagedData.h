// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Bits of what a package brings along; a set of them travels as int.
enum PackagedDataType {
  PACKAGED_TYPE_HBBTV_APP = 1,  ///< an app tree, unpacked under the hbbtv directory
  PACKAGED_TYPE_META_DATA = 2,  ///< metadata files, moved on to the metadata directory
};

/// Data that a package brings in a mountable image: unpacked once, shared by the package's app
/// types, removed with the last of them. A list file in the unpacked tree names the users.
///
/// All state is on disk and there is no lock: all packages share one mount point, so install and
/// uninstall must come from one thread at a time. In the daemon that is the installer task's.
namespace FileSystemUtils {

/// True when the data is in place and rAppType is listed, or when there was nothing to do. A tree
/// that exists counts as installed and is not refreshed; with bStarted (a run at daemon start) its
/// list is not touched either. The archive is always unpacked whole; of rDataType only
/// PACKAGED_TYPE_META_DATA matters here. On a failure only the mount is undone: what was unpacked
/// stays, and a later call takes it for installed. Throws nothing.
bool InstallPackagedData(const std::string& rPackageID, const std::string& rWidgetID,
                         const std::string& rAppType, const int& rDataType, bool bStarted);

/// Takes rAppType off the list, and the tree away with the last user. The metadata goes with
/// PACKAGED_TYPE_META_DATA whoever else uses it. Throws what JsonCpp throws on a list file that is
/// JSON but no list of texts.
void UninstallPackagedData(const std::string& rPackageID, const std::string& rAppType,
                           const int& rDataType);

/// Enters rAppType in a list file unless it is there. bCreate says whether a file that is missing
/// or unreadable is begun. Throws as UninstallPackagedData() does.
bool AddAppTypeToFile(const std::string& sFilePath, const std::string& rAppType, bool bCreate);

/// Gives the mount point back to the mount service; the outcome is only logged and the directory
/// stays.
void Unmount(const std::string& sMountedDir);

}  // namespace FileSystemUtils
