// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "desk/tv/services/mount_command.h"

namespace desk::tv {

/// How images can be mounted on this machine. LoopMount, FuseMount and UnmountDirectory return 0,
/// or another number and the reason. They block; callable from any thread.

/// Opens a free loop device. Empty when that works, else the reason.
std::string WhyNoLoop();
/// The kernel mounts the image with a loop device. It detects the file system; an image that cannot
/// be written is mounted read-only.
int LoopMount(const MountCommand& command, std::string& reason);
/// LoopMount's result when no loop device could be set up; the image itself may be fine.
constexpr int NO_LOOP_DEVICE = -1;

/// Opens the FUSE device, and looks for a driver and what it needs. Empty when FUSE mounts are
/// possible, else the reason and the remedy.
std::string WhyNoFuse();
/// Name of the FUSE driver for the image's file system; when it is empty, the reason is set.
std::string FuseDriverFor(const std::string& image, std::string& reason);
/// The installed FUSE drivers, separated by ", ".
std::string FuseDrivers();
int FuseMount(const std::string& driver, const MountCommand& command, std::string& reason);

int UnmountDirectory(const std::string& directory, std::string& reason);

}  // namespace desk::tv
