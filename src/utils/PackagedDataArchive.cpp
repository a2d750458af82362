// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/PackagedDataArchive.h"

#include <unzip.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>

#include "common/Log.h"
#include "utils/FileSystemUtils.h"

namespace boostfs = boost::filesystem;

namespace FileSystemUtils {

namespace {

constexpr std::size_t MAX_ENTRY_NAME = 256;
constexpr std::size_t READ_SIZE = 4096;
/// Size of the output buffer; one write per READ_SIZE would cost a multiple.
constexpr std::size_t STREAM_SIZE = 8 * READ_SIZE;

using ArchiveHandle = std::unique_ptr<void, decltype(&unzClose)>;
using FileHandle = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

/// False when the entry cannot be read to its end. A failed write is not noticed.
bool CopyCurrentEntry(unzFile pHandle, std::FILE* pFile) {
  char aBuffer[READ_SIZE];
  for (;;) {
    const int iCount = unzReadCurrentFile(pHandle, aBuffer, sizeof(aBuffer));
    if (iCount < 0) {
      return false;
    }
    if (iCount == 0) {
      return true;
    }
    std::fwrite(aBuffer, 1, static_cast<std::size_t>(iCount), pFile);
  }
}

bool ExtractFile(unzFile pHandle, const std::string& rTargetFilePath) try {
  ORV_LOG_INFO("[Info] rTargetFilePath : %s", rTargetFilePath.c_str());
  if (unzOpenCurrentFile(pHandle) != UNZ_OK) {
    ORV_LOG_ERROR("[ERROR] unzOpenCurrentFile() failed.");
    return false;
  }
  if (!CreateDirectories(rTargetFilePath)) {
    ORV_LOG_ERROR("[ERROR] Fail to Create target Directories.(path : %s)", rTargetFilePath.c_str());
    return false;
  }
  boost::system::error_code error;
  const boostfs::path targetPath(rTargetFilePath);
  // Directory entries return here, and so does a link to a directory. Intentional:
  // docs/behaviour.md, "A target that is a link".
  if (boostfs::is_directory(boostfs::status(targetPath, error))) {
    return true;
  }
  if (boostfs::is_symlink(boostfs::symlink_status(targetPath, error))) {
    ORV_LOG_ERROR("[ERROR] rTargetFilePath is symbolic link.");
    return false;
  }
  char aStreamBuffer[STREAM_SIZE];  // in use until the file is closed
  const FileHandle pFile(std::fopen(rTargetFilePath.c_str(), "wb"), &std::fclose);
  if (!pFile) {
    ORV_LOG_ERROR("[ERROR] Fail to open target file.(filename : %s)", rTargetFilePath.c_str());
    return false;
  }
  std::setvbuf(pFile.get(), aStreamBuffer, _IOFBF, sizeof(aStreamBuffer));
  return CopyCurrentEntry(pHandle, pFile.get());
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return false;
}

/// The target of the current entry. False when there is no current entry that can be read.
bool GetTargetPath(unzFile pHandle, const std::string& sDirectoryPath, std::string& rTargetPath) {
  unz_file_info info;
  char aName[MAX_ENTRY_NAME];
  if (unzGetCurrentFileInfo(pHandle, &info, aName, sizeof(aName), nullptr, 0, nullptr, 0) !=
      UNZ_OK) {
    return false;
  }
  rTargetPath = sDirectoryPath;
  if (rTargetPath.empty() || rTargetPath.back() != '/') {
    rTargetPath += '/';
  }
  // A name that fills its buffer has no terminator.
  rTargetPath.append(aName, strnlen(aName, sizeof(aName)));
  std::replace(rTargetPath.begin(), rTargetPath.end(), '\\', '/');
  return true;
}

bool GiveUp(unzFile pHandle) {
  unzCloseCurrentFile(pHandle);
  return false;
}

/// Null when the archive cannot be opened.
ArchiveHandle OpenArchive(const std::string& sArchivePath) {
  boost::system::error_code error;
  const bool bRegular = boostfs::is_regular_file(boostfs::status(sArchivePath, error));
  return {bRegular ? unzOpen(sArchivePath.c_str()) : nullptr, &unzClose};
}

}  // namespace

bool Unzip(const std::string& sArchivePath, const std::string& sDirectoryPath) {
  const ArchiveHandle pHandle = OpenArchive(sArchivePath);
  if (!pHandle) {
    ORV_LOG_ERROR("[ERROR] unzHandle is NULL");
    return false;
  }
  if (unzGoToFirstFile(pHandle.get()) != UNZ_OK) {
    return GiveUp(pHandle.get());
  }
  do {
    std::string targetFilename;
    if (!GetTargetPath(pHandle.get(), sDirectoryPath, targetFilename)) {
      return GiveUp(pHandle.get());
    }
    if (!ExtractFile(pHandle.get(), targetFilename)) {
      ORV_LOG_ERROR("[ERROR] ExtractFile() return false.[targetFilename : %s]",
                    targetFilename.c_str());
      return GiveUp(pHandle.get());
    }
    // Returns an error when the checksum of the entry is wrong; such an entry is accepted.
    unzCloseCurrentFile(pHandle.get());
    // Any other error leaves no current entry; GetTargetPath() then fails in the next round.
  } while (unzGoToNextFile(pHandle.get()) != UNZ_END_OF_LIST_OF_FILE);
  return true;
}

}  // namespace FileSystemUtils
