// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/PackagedData.h"

#include <ps_mount.h>
#include <tzplatform_config.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <exception>
#include <mutex>
#include <vector>

#include "common/JsonText.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "utils/FileSystemUtils.h"
#include "utils/PackagedDataArchive.h"

namespace boostfs = boost::filesystem;

namespace FileSystemUtils {

namespace {

constexpr const char* MOUNT_POINT = "temp_app";
constexpr const char* MOUNT_OPTIONS = "-o loop,nosuid,nodev,noexec ";
constexpr const char* FALLBACK_ARCHIVE_DIR = "/home/owner/share/tmp/sdk_tools/";
constexpr const char* NO_EXCEPTION_TEXT = "No diagnostic information available.";

std::string ReadPackagesPath() {
  const char* pPath = tzplatform_getenv(TZ_USER_APP);
  return pPath ? std::string(pPath) : std::string();
}

const std::string s_sPackagesPath = ReadPackagesPath();

/// Held for a whole install or uninstall: they share the mount point and the list files.
std::mutex s_mutexPackagedData;

struct Paths {
  std::string m_sTargetFile;  ///< the image in the package
  std::string m_sMountedDirectory;
  std::string m_sTargetHbbTvAppDirectory;
  std::string m_sAppTypeFile;
  std::string m_sMetaDataSource;
  std::string m_sMetaDataTarget;
};

Paths GetPaths(const std::string& rPackageID, const std::string& rWidgetID) {
  Paths paths;
  paths.m_sTargetFile = s_sPackagesPath + "/" + rPackageID + "/res/" + rWidgetID + ".tmg";
  paths.m_sMountedDirectory = GetHbbTvDirectoryPath() + MOUNT_POINT;
  paths.m_sTargetHbbTvAppDirectory = GetHbbTvDirectoryPath() + rPackageID;
  paths.m_sAppTypeFile = paths.m_sTargetHbbTvAppDirectory + "/" + PACKAGED_APP_TYPE_FILE;
  paths.m_sMetaDataSource = paths.m_sTargetHbbTvAppDirectory + "/metadata";
  paths.m_sMetaDataTarget = GetMetaDataDirectoryPath() + rPackageID;
  return paths;
}

bool MountFile(const std::string& sTargetFilePath, const std::string& sMountedDir) {
  ORV_LOG_INFO("[Info] sTargetFilePath : %s, sMountedDir : %s", sTargetFilePath.c_str(),
               sMountedDir.c_str());
  const std::string sTarget = MOUNT_OPTIONS + sTargetFilePath + " " + sMountedDir;
  ORV_LOG_DEBUG("[Debug] [TVMesaDev] sTarget : %s", sTarget.c_str());
  int iResult = -1;
  const int iRet = PS_Mount(sTarget.c_str(), static_cast<int>(sTarget.length()), 0, &iResult);
  ORV_LOG_DEBUG("[Debug] Mounting is done. ret[%d], result[%d] ", iRet, iResult);
  return iResult == 0;
}

/// The entries in ascending order of their paths: the order of a directory is not repeatable.
std::vector<boostfs::directory_entry> ListDirectory(const std::string& sDirectoryPath) {
  const boostfs::directory_iterator begin(sDirectoryPath);
  std::vector<boostfs::directory_entry> vEntries(begin, boostfs::directory_iterator());
  std::sort(vEntries.begin(), vEntries.end());
  return vEntries;
}

/// A failed walk or rename throws. Subdirectories stay.
void MoveEveryFilesInDirectory(const std::string& sOldDirectoryPath,
                               const std::string& sNewDirectoryPath) {
  ORV_LOG_INFO("[Info] sOldDirectoryPath : %s", sOldDirectoryPath.c_str());
  ORV_LOG_INFO("[Info] sNewDirectoryPath : %s", sNewDirectoryPath.c_str());
  for (const boostfs::directory_entry& rEntry : ListDirectory(sOldDirectoryPath)) {
    ORV_LOG_INFO("[Info] directory_iterator -> %s", rEntry.path().c_str());
    if (boostfs::is_directory(rEntry.status())) {
      continue;
    }
    const std::string sNewPath = sNewDirectoryPath + "/" + rEntry.path().filename().string();
    ORV_LOG_INFO("[Info] Move to %s", sNewPath.c_str());
    boostfs::rename(rEntry.path(), sNewPath);
  }
}

void MoveMetaData(const Paths& rPaths) {
  if (Exists(rPaths.m_sMetaDataSource) && Exists(rPaths.m_sMetaDataTarget)) {
    MoveEveryFilesInDirectory(rPaths.m_sMetaDataSource, rPaths.m_sMetaDataTarget);
  }
}

/// The root of a list file and the list in it. Of a text that is not JSON, or only in part, the
/// parser keeps what it read before the error; a list that it did not reach is empty.
struct AppTypeList {
  explicit AppTypeList(const std::string& rContent) {
    // The result of the parse is not tested, see above.
    JsonText::Parse(rContent, m_Root);
    m_Types = m_Root[PACKAGED_APP_TYPE_KEY];
  }
  bool Write(const std::string& sFilePath) {
    m_Root[PACKAGED_APP_TYPE_KEY] = m_Types;
    return WriteFile(sFilePath, JsonText::Write(m_Root));
  }

  Json::Value m_Root;
  Json::Value m_Types;
};

bool AddAppTypeToList(const std::string& sFilePath, const std::string& rContent,
                      const std::string& rAppType) {
  AppTypeList list(rContent);
  for (Json::ArrayIndex i = 0; i < list.m_Types.size(); ++i) {
    if (list.m_Types[i].asString() == rAppType) {
      return true;
    }
  }
  list.m_Types.append(rAppType);
  return list.Write(sFilePath);
}

void RemoveFromList(Json::Value& rTypes, const std::string& rAppType) {
  // The index moves on after a removal too, so the next element is skipped. Intentional:
  // docs/behaviour.md, "If an entry is listed twice in a row".
  for (Json::ArrayIndex i = 0; i < rTypes.size(); ++i) {
    Json::Value removed;
    if (rTypes[i].asString() == rAppType) {
      rTypes.removeIndex(i, &removed);
    }
  }
}

void UninstallHbbTvApp(const std::string& sTargetDirectory, const std::string& rAppType) {
  const std::string sAppTypeFilePath = sTargetDirectory + "/" + PACKAGED_APP_TYPE_FILE;
  std::string sContent;
  if (!Exists(sAppTypeFilePath) || !ReadFile(sAppTypeFilePath, sContent)) {
    RemoveDirectories(sTargetDirectory);
    return;
  }
  AppTypeList list(sContent);
  RemoveFromList(list.m_Types, rAppType);
  if (list.m_Types.empty() || !list.Write(sAppTypeFilePath)) {
    RemoveDirectories(sTargetDirectory);
  }
}

/// An exception leaves the mount in place. Intentional: docs/behaviour.md, "An exception ends the
/// install".
bool InstallPackagedData(const Paths& rPaths, const std::string& rAppType, int iDataType,
                         bool bStarted) {
  if (Exists(rPaths.m_sTargetHbbTvAppDirectory)) {
    return bStarted || AddAppTypeToFile(rPaths.m_sAppTypeFile, rAppType, false);
  }
  ORV_LOG_INFO("[Info] sMountedDirectory : %s", rPaths.m_sMountedDirectory.c_str());
  if (!CreateDirectories(rPaths.m_sMountedDirectory + "/")) {
    ORV_LOG_ERROR("[ERROR] FileSystemUtils::CreateDirectory() return false.");
    return false;
  }
  const bool bMounted = MountFile(rPaths.m_sTargetFile, rPaths.m_sMountedDirectory);
  const std::string sArchivePath =
      (bMounted ? rPaths.m_sMountedDirectory : FALLBACK_ARCHIVE_DIR) + PACKAGED_ARCHIVE;
  if (!bMounted && !Exists(sArchivePath)) {
    ORV_LOG_ERROR("[ERROR] Cannot find target zip file.");
    return false;
  }
  ORV_LOG_INFO("[Info] sTargetHbbTvAppDirectory : %s", rPaths.m_sTargetHbbTvAppDirectory.c_str());
  const bool bCreated = CreateDirectories(rPaths.m_sTargetHbbTvAppDirectory + "/");
  const bool bUnpacked = bCreated && Unzip(sArchivePath, rPaths.m_sTargetHbbTvAppDirectory);
  if (!bCreated) {
    ORV_LOG_ERROR("[ERROR] FileSystemUtils::CreateDirectory() return false.");
  } else if (!bUnpacked) {
    ORV_LOG_ERROR("[ERROR] FileSystemUtils::Unzip() return false.");
  }
  if (bMounted) {
    Unmount(rPaths.m_sMountedDirectory);
  }
  if (!bUnpacked) {
    return false;
  }
  if (iDataType & PACKAGED_TYPE_META_DATA) {
    if (!CreateDirectories(rPaths.m_sMetaDataTarget + "/")) {
      ORV_LOG_ERROR("[ERROR] FileSystemUtils::CreateDirectory() return false.");
      return false;
    }
    MoveMetaData(rPaths);
  }
  return AddAppTypeToFile(rPaths.m_sAppTypeFile, rAppType, true);
}

}  // namespace

bool InstallPackagedData(const std::string& rPackageID, const std::string& rWidgetID,
                         const std::string& rAppType, const int& rDataType, bool bStarted) try {
  ORV_LOG_INFO("[Info] rPackageID : %s, bStarted : %d, rAppType : %s, rDataType : %d",
               rPackageID.c_str(), bStarted, rAppType.c_str(), rDataType);
  const std::lock_guard<std::mutex> lock(s_mutexPackagedData);
  return InstallPackagedData(GetPaths(rPackageID, rWidgetID), rAppType, rDataType, bStarted);
} catch (const std::exception& e) {
  const std::string sText = e.what();
  ORV_LOG_INFO("[Info] exception : %s", sText.empty() ? NO_EXCEPTION_TEXT : sText.c_str());
  return false;
} catch (...) {  // anything else that is thrown has no text
  ORV_LOG_INFO("[Info] exception : %s", NO_EXCEPTION_TEXT);
  return false;
}

void UninstallPackagedData(const std::string& rPackageID, const std::string& rAppType,
                           const int& rDataType) {
  ORV_LOG_INFO("[Info] rPackageID : %s, rAppType : %s, rDataType : %d", rPackageID.c_str(),
               rAppType.c_str(), rDataType);
  const std::lock_guard<std::mutex> lock(s_mutexPackagedData);
  if (rDataType & PACKAGED_TYPE_META_DATA) {
    const std::string sTargetDirectory = GetMetaDataDirectoryPath() + rPackageID + "/";
    ORV_LOG_INFO("[Info] [PACKAGED_TYPE_META_DATA] sTargetDirectory : %s",
                 sTargetDirectory.c_str());
    if (Exists(sTargetDirectory)) {
      RemoveDirectories(sTargetDirectory);
    }
  }
  if (rDataType & PACKAGED_TYPE_HBBTV_APP) {
    const std::string sTargetDirectory = GetHbbTvDirectoryPath() + rPackageID + "/";
    ORV_LOG_INFO("[Info] [PACKAGED_TYPE_HBBTV_APP] sTargetDirectory : %s",
                 sTargetDirectory.c_str());
    if (Exists(sTargetDirectory)) {
      UninstallHbbTvApp(sTargetDirectory, rAppType);
    }
  }
}

bool AddAppTypeToFile(const std::string& sFilePath, const std::string& rAppType, bool bCreate) {
  std::string sContent;
  if (Exists(sFilePath) && ReadFile(sFilePath, sContent)) {
    return AddAppTypeToList(sFilePath, sContent, rAppType);
  }
  if (!bCreate) {
    return false;
  }
  Json::Value root;
  root[PACKAGED_APP_TYPE_KEY].append(rAppType);
  return WriteFile(sFilePath, JsonText::Write(root));
}

void Unmount(const std::string& sMountedDir) {
  ORV_LOG_INFO("[Info] sMountedDir : %s", sMountedDir.c_str());
  int iResult = -1;
  const int iRet =
      PS_Umount(sMountedDir.c_str(), static_cast<int>(sMountedDir.length()), 0, &iResult);
  ORV_LOG_DEBUG("[Debug] UnMounting is done. ret[%d], result[%d] ", iRet, iResult);
}

}  // namespace FileSystemUtils
