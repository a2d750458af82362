// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "desk/common/paths.h"

namespace desk::tv {

class TvLog;

/// The directory of a TV while this process uses it: created, locked, and cleared of what a killed
/// TV left behind. Main thread only.
class DeskDirectory {
 public:
  /// Creates the directory with its mark, and locks it. Throws DeskError as PrepareDeskDirectory
  /// does, and Failed when another desk-tv uses the directory.
  explicit DeskDirectory(const DeskPaths& paths);
  /// Removes the files that announce a running TV, and releases the lock.
  ~DeskDirectory();
  DeskDirectory(const DeskDirectory&) = delete;
  DeskDirectory& operator=(const DeskDirectory&) = delete;

  /// Ends the processes and mounts that a killed TV left behind, and empties the TV's /tmp, as
  /// every power-on does. Call it before anything is started.
  void ClearLeftovers(TvLog& log);

 private:
  void MakeDirectories();
  void Lock();
  void WritePid();

  const DeskPaths m_paths;
  int m_lock = -1;
};

/// Deletes everything in a directory and keeps the directory itself. Links are not followed; a path
/// that is a link itself is left as it is.
void EmptyDirectory(const std::string& path);

/// Kills every process that was started as an app of this TV, or by such an app; they are
/// recognised by their environment. Returns how many.
int KillStrayApps(const DeskPaths& paths);

/// Unmounts everything that this process sees mounted under the TV's directory, but not the
/// directory itself. Returns how many.
int UnmountAllUnder(const DeskPaths& paths);

}  // namespace desk::tv
