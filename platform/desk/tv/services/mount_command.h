// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/paths.h"

namespace desk::tv {

/// What a caller asks of the mount service, with paths as desk-tv sees them.
struct MountCommand {
  std::string options;  ///< exactly as given
  std::string image;
  std::string directory;
};

/// Takes "-o <options> <image> <directory>" apart, words separated by one blank each. Both paths
/// must lead into the desk's packages, links followed; a caller in the sandbox names them as it
/// sees them. Throws DeskError (Failed) with the reason otherwise.
MountCommand ParseMountCommand(const std::string& command, const DeskPaths& paths);

/// The same for the path of a directory to unmount.
std::string ResolveMountPath(const std::string& path, const DeskPaths& paths);

/// The options without "loop" and "loop=...", which only the kernel's own way understands.
std::string OptionsWithoutLoop(const std::string& options);

}  // namespace desk::tv
