// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>

#include "desk/cli/television.h"

namespace desk::cli {

/// The daemon's flag, list and data files: an object from each path, as the daemon sees it, to the
/// file's size in bytes. A directory ends with a slash and has the size 0. Symbolic links are not
/// followed.
Json::Value ListFiles(const DeskPaths& paths);

/// Everything about a TV as one object with the members that docs/tv.md lists. When the store
/// cannot be read, "store" is empty and `trouble` says why. Throws DeskError.
Json::Value ComposeDump(Television& tv, const DeskPaths& paths, std::string& trouble);

}  // namespace desk::cli
