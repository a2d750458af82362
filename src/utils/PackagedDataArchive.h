// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace FileSystemUtils {

/// Unpacks the whole archive into an existing directory. False at the first entry that fails; what
/// was unpacked before it stays. Checksums are not compared. Entry names are taken as they stand,
/// only that a backslash becomes a slash: an entry may lead out of the directory, and keeping that
/// from reaching anything is up to the rights of the process. Throws nothing of the file system's.
bool Unzip(const std::string& sArchivePath, const std::string& sDirectoryPath);

}  // namespace FileSystemUtils
