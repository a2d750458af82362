// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "tv/services/mount_command.h"

namespace desk::tv {

/// How images can be mounted here. The three operations return 0, or a number with the reason; they
/// block, and run on any thread of a process that may mount.

/// Empty when a loop device is to be had, else why not.
std::string WhyNoLoop();
/// By the kernel, with a loop device; the file system is detected, and one that cannot be written
/// is mounted read-only.
int LoopMount(const MountCommand& command, std::string& reason);
/// What LoopMount returns when it got no loop device after all. Nothing is said of the image then.
constexpr int NO_LOOP_DEVICE = -1;

/// Name of the FUSE driver for the image's file system. Empty, with the reason, when there is none.
std::string FuseDriverFor(const std::string& image, std::string& reason);
/// The FUSE drivers that are installed, separated by ", ".
std::string FuseDrivers();
int FuseMount(const std::string& driver, const MountCommand& command, std::string& reason);

int UnmountDirectory(const std::string& directory, std::string& reason);

}  // namespace desk::tv
