// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>

#include "cli/television.h"

namespace desk {

/// The daemon's flag, list and data files of one desk: an object from the path, as the daemon
/// itself sees it, to the size in bytes. A directory has a closing slash and the size 0. Symbolic
/// links are not followed.
Json::Value ListFiles(const DeskPaths& paths);

/// Everything about a TV as one object, the members as docs/tv.md lists them. What cannot be read
/// of the store is told in trouble and leaves "store" empty. Throws DeskError.
Json::Value ComposeDump(Television& tv, const DeskPaths& paths, std::string& trouble);

}  // namespace desk
