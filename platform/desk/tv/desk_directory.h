// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/paths.h"

namespace desk::tv {

class TvLog;

/// The directory of a TV while this process has it: made, locked, freed of what a TV that was
/// killed left behind.
class DeskDirectory {
 public:
  /// Throws DeskError (Failed) when another desk-tv has it or it cannot be written.
  explicit DeskDirectory(const DeskPaths& paths);
  /// Takes away what tells of a running TV, and frees the lock.
  ~DeskDirectory();
  DeskDirectory(const DeskDirectory&) = delete;
  DeskDirectory& operator=(const DeskDirectory&) = delete;

  /// Ends processes and mounts of a TV that was killed, and empties its /tmp as every power-on
  /// does; to be called before anything is started.
  void ClearLeftovers(TvLog& log);

 private:
  void MakeDirectories();
  void Lock();
  void WritePid();

  const DeskPaths m_paths;
  int m_lock = -1;
};

/// Removes everything in a directory, not following links, and leaves the directory.
void EmptyDirectory(const std::string& path);

/// Kills every process that was started as an app of this TV, or by such a one: their environment
/// says so. Returns how many.
int KillStrayApps(const DeskPaths& paths);

/// Takes away every mount under the TV's directory that this process sees, except the directory's
/// own. Returns how many.
int UnmountAllUnder(const DeskPaths& paths);

}  // namespace desk::tv
