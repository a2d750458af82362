// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "common/paths.h"

namespace desk::tv {

/// One entry of a directory of the machine.
struct HostEntry {
  std::string name;
  std::string link;  ///< where it points when it is a symbolic link
  bool directory = false;
};

/// Sorted by name; empty when the directory cannot be read.
std::vector<HostEntry> ListHost(const std::string& directory);

/// What goes into a sandbox.
struct SandboxPlan {
  DeskPaths paths{"."};
  std::string program;                   ///< path of the daemon on the machine
  std::string tools;                     ///< directory of the desk's own programs
  std::string socket;                    ///< path of the bus's socket on the machine
  std::vector<std::string> environment;  ///< "NAME=value", inside only
  int infoFd = -1;                       ///< gets the pid of the daemon as JSON; -1 for none
  std::vector<HostEntry> root;           ///< of "/", "/opt" and "/home"
  std::vector<HostEntry> opt;
  std::vector<HostEntry> home;
};

/// The command line of bubblewrap. Inside, the machine is read-only and seen where it always is,
/// but /tmp, /opt/share, /opt/usr/apps and /home/owner are the TV's, /run holds nothing but the
/// TV's own, and only the daemon's package can be written of the packages. Of run/ and log/ only
/// the fault table, the daemon's log and its journal can be written, where these files are there
/// already. The daemon is run from SANDBOX_PROGRAMS, so that it may come from a place that is
/// hidden inside.
std::vector<std::string> SandboxArguments(const SandboxPlan& plan);

/// Path of the bus's socket inside.
std::string SandboxSocket(const SandboxPlan& plan);

/// Where the directories of the daemon's program and of the desk's own programs are inside.
constexpr const char* SANDBOX_PROGRAMS = "/run/tv-programs";
constexpr const char* SANDBOX_TOOLS = "/run/tv-tools";

}  // namespace desk::tv
