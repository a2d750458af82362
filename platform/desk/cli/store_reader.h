// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>

#include "common/paths.h"

namespace desk {

/// Where the daemon keeps its records.
std::string StorePath(const DeskPaths& paths);

/// The rows of the daemon's store in ascending package id, one object each with a member per
/// column. "variables" is the object that its text holds, or the text itself when it is no JSON; a
/// null column is null.
///
/// The file is never changed and never locked: a reader is not in the daemon's way. While the
/// daemon writes this waits for up to two seconds. When an interrupted write left a journal behind,
/// a copy of both is read, as the daemon will see it.
///
/// Throws Failure: NotFound when there is no file, Failed when it is damaged or no store.
Json::Value ReadStore(const std::string& path);

}  // namespace desk
