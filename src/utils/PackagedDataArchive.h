// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace FileSystemUtils {

/// Unpacks the whole archive into an existing directory. False at the first entry that fails;
/// entries unpacked before it stay. Anything but a regular file (links followed) counts as an
/// archive that cannot be opened, so a FIFO or a device cannot block the caller. Checksums are not
/// compared. Entry names are used as they are, except that a backslash becomes a slash: an entry
/// may lead out of the directory, and only the rights of the process limit what it reaches. Throws
/// nothing.
bool Unzip(const std::string& sArchivePath, const std::string& sDirectoryPath);

}  // namespace FileSystemUtils
