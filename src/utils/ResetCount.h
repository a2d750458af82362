// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Detection of a factory or service reset of the TV: two counters of the platform are compared
/// with their values at the last start, which the daemon keeps in a small file. Used at start-up
/// only.
namespace FileSystemUtils {

/// True if the TV was reset since the last start. The new counters are on disk before the function
/// returns, so a reset is reported once, whatever the caller does with it.
bool CheckTVResetAndUpdateResetCountInfo();

/// Both 0 when the file is missing or broken. No exception leaves it.
void GetFactoryAndServiceResetCount(int& rFactory, int& rService);

/// A failure is only logged. A symbolic link is never written through.
void SetFactoryAndServiceResetCount(int factory, int service);

}  // namespace FileSystemUtils
