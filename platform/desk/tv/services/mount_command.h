// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "desk/common/paths.h"

namespace desk::tv {

/// A request to the mount service, with paths as desk-tv sees them.
struct MountCommand {
  std::string options;  ///< exactly as given
  std::string image;
  std::string directory;
};

/// Parses "-o <options> <image> <directory>", separated by one blank each. Both paths must lead
/// into the desk's packages after links are followed; a caller in the sandbox uses the sandbox's
/// paths. Throws DeskError (Failed) with the reason otherwise.
MountCommand ParseMountCommand(const std::string& command, const DeskPaths& paths);

/// The same for the path of a directory to unmount.
std::string ResolveMountPath(const std::string& path, const DeskPaths& paths);

/// The options without "loop" and "loop=...", which FUSE drivers do not know.
std::string OptionsWithoutLoop(const std::string& options);

}  // namespace desk::tv
