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

/// Takes the part of the mount service: returns *result, 0 for success. Runs on the daemon's
/// thread. May write files into the directory, as if they came from the image. An empty function,
/// the default, succeeds. A fault of "PS_Mount" or "PS_Umount" is a service that cannot be reached:
/// *result stays untouched.
void SetMountHandler(std::function<int(const Mount&)> handler);
void SetUmountHandler(std::function<int(const std::string& directory)> handler);

/// The present mounts. A command that is not "-o options image directory" has the result 1.
std::vector<Mount> Mounts();

}  // namespace fake
