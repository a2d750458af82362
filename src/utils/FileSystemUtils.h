// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Small file operations without state and without locks, callable from any thread. Each reports a
/// failure by its result and one log line and throws nothing of the file system's.
namespace FileSystemUtils {

/// A path exists when its status, links followed, could be read and says so. A path behind an
/// unreadable directory therefore counts as absent.
bool Exists(const std::string& sPath);

/// Makes what stands in front of the last "/": a path with a closing "/" names the directory to
/// make, the path of a file names the directory that is to hold it. A name without any "/" is made
/// itself. True also when it was there already, whatever kind of file it is.
bool CreateDirectories(const std::string& sDirectoryPath);

/// Removes a file or a directory with all that is in it; silent when there is none. The caller
/// learns nothing of a failure.
void RemoveDirectories(const std::string& sDirectoryPath);

/// Replaces the file's content. False only when the file cannot be opened: a write that fails is
/// not noticed. Blocks for a sync() of the whole system.
bool WriteFile(const std::string& filePath, const std::string& content);

/// Reads the file's first word and no more: leading white space is skipped, the next blank or
/// newline ends it. Enough for the compact JSON that WriteFile() is given. rContent is untouched
/// when the file cannot be opened.
bool ReadFile(const std::string& filePath, std::string& rContent);

/// Where the metadata files of a package were installed; empty, with an error in the log, when the
/// package has none.
std::string GetPackagedMetaDataDirectoryPath(const std::string& rPackageID);

/// The platform's answer of this moment, ending in "/"; empty when it has none.
std::string GetSharedDataPath();

/// Directories of packaged data, ending in "/". Taken from the platform once, before main(): not
/// for use in static initialisers of other files.
const std::string& GetHbbTvDirectoryPath();
const std::string& GetMetaDataDirectoryPath();

}  // namespace FileSystemUtils
