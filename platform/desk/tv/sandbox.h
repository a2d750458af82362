// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "desk/common/paths.h"

namespace desk::tv {

/// One entry of a directory of the machine.
struct HostEntry {
  std::string name;
  std::string link;  ///< target of a symbolic link; else empty
  bool directory = false;
};

/// Sorted by name; empty when the directory cannot be read.
std::vector<HostEntry> ListHost(const std::string& directory);

/// The contents of a sandbox.
struct SandboxPlan {
  DeskPaths paths{"."};
  std::string program;                   ///< path of the daemon on the machine
  std::string tools;                     ///< directory of the desk's programs
  std::string socket;                    ///< path of the bus's socket on the machine
  std::vector<std::string> environment;  ///< "NAME=value", inside only
  int infoFd = -1;                       ///< receives the daemon's pid as JSON; -1 for none
  std::vector<HostEntry> root;           ///< of "/", "/opt" and "/home"
  std::vector<HostEntry> opt;
  std::vector<HostEntry> home;
};

/// The command line of bubblewrap. Inside, the machine's files are read-only at their usual paths,
/// but /tmp, /opt/share, /opt/usr/apps and /home/owner are the TV's, and /run contains the TV's
/// files only. Of the packages only the daemon's can be written; of run/ and log/ only the fault
/// table, the daemon's log and its journal, if these files exist. The daemon runs from
/// SANDBOX_PROGRAMS, so that its program may be in a directory that is hidden inside.
std::vector<std::string> SandboxArguments(const SandboxPlan& plan);

/// Path of the bus's socket, as seen inside.
std::string SandboxSocket(const SandboxPlan& plan);

/// The directories of the daemon's program and of the desk's programs, as seen inside.
constexpr const char* SANDBOX_PROGRAMS = "/run/tv-programs";
constexpr const char* SANDBOX_TOOLS = "/run/tv-tools";

}  // namespace desk::tv
