// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Detection of a factory or service reset of the TV: two counters of the platform, compared with
/// those that a small file of the daemon held at the last start. Used while the daemon starts.
namespace FileSystemUtils {

/// True if the TV was reset since the last start. The new counters are on disk before it returns,
/// so a reset is reported once, whatever the caller makes of it.
bool CheckTVResetAndUpdateResetCountInfo();

/// Both 0 when the file is missing or broken. No exception leaves it.
void GetFactoryAndServiceResetCount(int& rFactory, int& rService);

/// A failed write is logged and otherwise goes unnoticed. A symbolic link is never written through.
void SetFactoryAndServiceResetCount(int factory, int service);

}  // namespace FileSystemUtils
