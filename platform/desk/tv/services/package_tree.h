// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "desk/common/paths.h"

namespace desk::tv {

/// A directory beside the packages, on their file system, in which a tree is made ready or waits
/// for its removal. Goes with the object, and with the next start when the process ended before.
/// All operations block and throw DeskError (Failed); one thread at a time.
class StagingDirectory {
 public:
  explicit StagingDirectory(const DeskPaths& paths);
  ~StagingDirectory();
  StagingDirectory(const StagingDirectory&) = delete;
  StagingDirectory& operator=(const StagingDirectory&) = delete;

  /// The tree of the package to be; exists and is empty at first.
  const std::string& Tree() const { return m_tree; }

  /// Makes the tree the package's own, in one step. What lies there without being installed goes.
  void MoveTo(const std::string& package);
  /// Exchanges res/ of the tree and of the package, in one step where the file system can. A second
  /// call undoes the first.
  void ExchangeResources(const std::string& package);
  /// Takes the package's tree away, and gives it back.
  void TakeAway(const std::string& package);
  void GiveBack(const std::string& package);

  /// Removes what an interrupted process left behind.
  static void RemoveLeftovers(const DeskPaths& paths);

 private:
  std::string m_directory;
  std::string m_tree;
};

}  // namespace desk::tv
