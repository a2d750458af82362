// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <mutex>
#include <string>
#include <vector>

#include "common/paths.h"
#include "tv/router.h"
#include "tv/services/mount_command.h"
#include "tv/worker.h"

namespace desk::tv {

/// The privileged mount service: mount.mount and mount.umount, one at a time on a thread of its
/// own. Mounts appear in the mount namespace of desk-tv, from which the daemon's sandbox receives
/// them.
///
/// An image is loop-mounted by the kernel with exactly the options given; where no loop device is
/// to be had, a FUSE driver for the image's file system does it. An image that the kernel refuses
/// is left at that.
class Mounts {
 public:
  Mounts(Router& router, const DeskPaths& paths);
  /// On the main loop's thread. Unmounts what is still mounted.
  ~Mounts();

  /// "loop", "fuse (squashfuse): <why no loop>" or "none: <reason>", then how the last attempt
  /// failed if it did.
  std::string Describe() const;
  /// An array of what is mounted now: image, directory, options, how.
  Json::Value Dump() const;
  /// Power-off. Blocks.
  void UnmountAll();

 private:
  struct Mounted {
    MountCommand command;
    std::string how;
  };
  struct Outcome {
    int result = 0;
    std::string how;
    std::string reason;
  };

  Json::Value Mount(const std::string& command);
  Json::Value Unmount(const std::string& path);
  Outcome MountImage(const MountCommand& command);
  static Outcome MountByDriver(const MountCommand& command, const std::string& whyNoLoop);
  void NoteLoop(const std::string& trouble);
  Json::Value Answer(const Outcome& outcome);

  const DeskPaths m_paths;
  mutable std::mutex m_mutex;
  std::vector<Mounted> m_mounted;  ///< guarded by m_mutex
  std::string m_lastFailure;       ///< guarded by m_mutex
  std::string m_loopTrouble;       ///< why the last mount got no loop device; guarded by m_mutex
  Worker m_worker;                 ///< last, so that its thread ends first
};

}  // namespace desk::tv
