// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "desk/common/paths.h"

namespace desk {

/// What is behind a URL of a channel record: "ok", "missing", "not JSON: <where and why>", "web"
/// for http and https, "no URL", or "not a file or web URL". Reads files of the desk; a path as the
/// daemon sees it in its sandbox is looked up in the desk's directory. Callable from any thread.
std::string StateOfFeed(const DeskPaths& paths, const std::string& url);

}  // namespace desk
