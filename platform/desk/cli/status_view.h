// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>

#include "desk/common/paths.h"

namespace desk::cli {

/// Adds `busy` to the reply of `tv.status`: what the daemon waits for, an array of texts that comes
/// from the end of the journal. It is empty when the daemon does not run.
void AddBusy(Json::Value& status, const DeskPaths& paths);

/// The status as `tv status` prints it, one line for each fact.
std::string StatusText(const Json::Value& status, const DeskPaths& paths);

}  // namespace desk::cli
