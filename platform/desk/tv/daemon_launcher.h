// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tv/options.h"
#include "tv/supervisor.h"

namespace desk::tv {

/// Starts the daemon as the TV's options want it: in its sandbox or without, with its environment
/// and clock. Constant after construction; Launch is for the main thread.
class DaemonLauncher {
 public:
  /// The program is $ORV_ENABLER, else orv-enabler beside desk-tv. Throws DeskError (NotFound) when
  /// it, or bubblewrap where it is wanted, is missing.
  DaemonLauncher(const TvOptions& options, const std::string& busSocket);

  /// Throws DeskError.
  DaemonProcess Launch() const;

 private:
  DaemonProcess LaunchInSandbox() const;
  DaemonProcess LaunchBare() const;
  std::vector<std::string> Environment(const std::string& root, const std::string& log,
                                       const std::string& prefix, const std::string& socket,
                                       const std::string& tools) const;

  const TvOptions m_options;
  const std::string m_socket;
  const std::string m_tools;
  const std::string m_program;
  /// Since when the daemon's time of day runs faster: over its restarts it never goes back.
  const std::chrono::nanoseconds m_since;
};

}  // namespace desk::tv
