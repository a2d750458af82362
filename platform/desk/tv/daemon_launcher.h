// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "desk/tv/options.h"
#include "desk/tv/supervisor.h"
#include "desk/tv/tv_clock.h"

namespace desk::tv {

/// Starts the daemon as the TV's options say: with or without a sandbox, with its environment and
/// the TV's clock. Main thread only.
class DaemonLauncher {
 public:
  /// The program is $ORV_ENABLER, else orv-enabler next to desk-tv. Throws DeskError: NotFound when
  /// it, bubblewrap or the clock library is needed and missing, Failed when the TV's clock cannot
  /// be stored.
  DaemonLauncher(const TvOptions& options, const std::string& busSocket);

  /// Throws DeskError.
  DaemonProcess Launch() const;

  const TvClock& Clock() const { return m_clock; }

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
  const TvClock m_clock;
};

}  // namespace desk::tv
