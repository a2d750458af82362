// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>

#include "desk/common/paths.h"

namespace desk::cli {

/// The file of the daemon's store.
std::string StorePath(const DeskPaths& paths);

/// The rows of the daemon's store in ascending package id, one object each with a member per
/// column. "variables" is the object that its text holds, or the text itself when it is not JSON; a
/// null column is null.
///
/// The file is neither changed nor locked, so a reader never blocks the daemon. While the daemon
/// writes, this waits for up to two seconds. When an interrupted write left a journal, a copy of
/// both files is rolled back and read: it is what the daemon will see.
///
/// Throws Failure: NotFound when there is no file, Failed when it is damaged or not a store.
Json::Value ReadStore(const std::string& path);

}  // namespace desk::cli
