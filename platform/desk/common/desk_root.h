// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "desk/common/paths.h"

namespace desk {

/// Version of the layout of a desk's directory, as its mark states it.
constexpr int DESK_FORMAT = 1;

/// Throws DeskError (Usage) when the path is never used for a TV, even when it is empty: "/", a
/// home directory or a directory that contains one, and the directories of the system.
void RequireOwnDirectory(const DeskPaths& paths);

/// Makes the directory a desk: creates it when it does not exist, and writes its mark. A directory
/// without a mark is accepted when it is empty, or when it has the complete layout of a desk that
/// was made before there were marks. Changes nothing else, and nothing at all when it throws
/// DeskError: Usage as above, else Failed with the reason and the remedy. Several processes may
/// call it at the same time.
void PrepareDeskDirectory(const DeskPaths& paths);

/// Name of the user who owns the path, or the nearest directory above it that can be seen; empty
/// when this process's user owns it.
std::string ForeignOwner(const std::string& path);

}  // namespace desk
