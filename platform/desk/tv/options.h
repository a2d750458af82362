// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "desk/common/paths.h"

namespace desk::tv {

/// desk-tv's command line. Constant after Parse.
struct TvOptions {
  DeskPaths paths{"."};
  bool offline = false;     ///< network time is not set by itself
  int speed = 1;            ///< how many times faster the daemon's clock runs
  bool resetClock = false;  ///< the TV's clock starts at the machine's time, even if it goes back
  bool sandbox = true;
  std::string log;   ///< desk-tv's own log; paths.TvLog() by default
  int readyFd = -1;  ///< receives "ready" or "failed: why" after the start; -1 for none

  /// Throws DeskError (Usage).
  static TvOptions Parse(int argc, const char* const* argv);
  static const char* HelpText();
};

}  // namespace desk::tv
