// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "desk/common/paths.h"

namespace desk::tv {

/// Moves this process into a mount namespace of its own. Mounts under the TV's directory reach the
/// processes that it starts and disappear with them; the machine never sees them. For an ordinary
/// user a user namespace is created too. Call it while the process has one thread, before it keeps
/// anything under the directory open.
///
/// Returns the result as text for people. If the process is not allowed to do this it continues
/// without, and its mounts are the machine's.
std::string EnterMountNamespace(const DeskPaths& paths);

}  // namespace desk::tv
