// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/paths.h"

namespace desk::tv {

/// Gives this process a mount namespace of its own, in which what is mounted under the TV's
/// directory reaches the processes it starts and vanishes with them: the machine never sees it. An
/// ordinary user gets a user namespace around it. To be called while the process has one thread,
/// before anything under the directory is opened for good.
///
/// Returns how it went, for people: a process that may not do this works on without, and its mounts
/// are the machine's.
std::string EnterMountNamespace(const DeskPaths& paths);

}  // namespace desk::tv
