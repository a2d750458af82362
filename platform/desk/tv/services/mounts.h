// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <mutex>
#include <string>
#include <vector>

#include "desk/common/paths.h"
#include "desk/tv/router.h"
#include "desk/tv/services/mount_command.h"
#include "desk/tv/worker.h"

namespace desk::tv {

/// The privileged mount service. mount.mount and mount.umount run one at a time on a thread of
/// their own; mount.check says which images of an installed package cannot be mounted. Mounts
/// appear in the mount namespace of desk-tv and reach the daemon's sandbox from there.
///
/// The kernel mounts an image with a loop device and exactly the options given. Where no loop
/// device is available, the FUSE driver for the image's file system mounts it. An image that the
/// kernel refuses is not tried again with a driver.
class Mounts {
 public:
  Mounts(Router& router, const DeskPaths& paths);
  /// On the main loop's thread. Unmounts what is still mounted.
  ~Mounts();

  /// How images can be mounted, found out by opening the devices: "loop", "fuse (squashfuse): <why
  /// no loop>" or "none: <why no loop>; <why no FUSE>". Then the reason why the last mount failed,
  /// if it did.
  std::string Describe() const;
  /// The current mounts, an array of `image`, `directory`, `options`, `how`.
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
  Json::Value Check(const std::string& package) const;
  std::string WhyNoLoopNow() const;
  Outcome MountImage(const MountCommand& command);
  static Outcome MountByDriver(const MountCommand& command, const std::string& whyNoLoop);
  void NoteLoop(const std::string& trouble);
  Json::Value Answer(const Outcome& outcome);

  const DeskPaths m_paths;
  mutable std::mutex m_mutex;
  std::vector<Mounted> m_mounted;  ///< guarded by m_mutex
  std::string m_lastFailure;       ///< guarded by m_mutex
  std::string m_loopTrouble;       ///< why the last mount got no loop device; guarded by m_mutex
  Worker m_worker;                 ///< the last member, so that its thread ends first
};

}  // namespace desk::tv
