// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// Small file operations without state and without locks, callable from any thread. Each reports a
/// failure by its result and one log line; no file-system exception leaves it.
namespace FileSystemUtils {

/// Whether the status of the path, links followed, can be read and is that of a file. A path behind
/// an unreadable directory therefore counts as absent.
bool Exists(const std::string& sPath);

/// Creates the part before the last "/": a path that ends in "/" names the directory to create, the
/// path of a file stands for its directory. A name without any "/" is created itself. True also
/// when the path already exists, whatever kind of file it is.
bool CreateDirectories(const std::string& sDirectoryPath);

/// Removes a file, or a directory with its contents; silent when the path does not exist. A failure
/// is only logged.
void RemoveDirectories(const std::string& sDirectoryPath);

/// Replaces the file's content. False only when the file cannot be opened: a failed write is not
/// noticed. Blocks for a sync() of the whole system.
bool WriteFile(const std::string& filePath, const std::string& content);

/// Reads the first word of the file only: leading white space is skipped, and the next white space
/// ends it. This is enough for compact JSON. rContent is unchanged when the file cannot be opened.
bool ReadFile(const std::string& filePath, std::string& rContent);

/// The directory of a package's installed metadata files; empty, with an error in the log, when it
/// does not exist.
std::string GetPackagedMetaDataDirectoryPath(const std::string& rPackageID);

/// Asks the platform at each call. Ends in "/"; empty when the platform returns null.
std::string GetSharedDataPath();

/// Directories of packaged data, ending in "/". Read from the platform once, before main(); static
/// initialisers of other files must not use them.
const std::string& GetHbbTvDirectoryPath();
const std::string& GetMetaDataDirectoryPath();

}  // namespace FileSystemUtils
