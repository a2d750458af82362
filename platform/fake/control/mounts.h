// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

/// The privileged mount service. Nothing is ever mounted.
namespace fake {

struct Mount {
  std::string options;  ///< "loop,nosuid"
  std::string image;
  std::string directory;
};

/// Stands for the mount service: gives *result, 0 for done. Runs on the daemon's thread. May put
/// files into the directory, as if they were in the image. An empty function is the default: done.
/// That the service is out of reach is a fault of "PS_Mount" or "PS_Umount": *result untouched.
void SetMountHandler(std::function<int(const Mount&)> handler);
void SetUmountHandler(std::function<int(const std::string& directory)> handler);

/// What is mounted now. A mount that is not "-o options image directory" gives result 1.
std::vector<Mount> Mounts();

}  // namespace fake
