// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/paths.h"

namespace desk::tv {

/// How the TV was asked to be: desk-tv's command line. Constant after Parse.
struct TvOptions {
  DeskPaths paths{"."};
  bool offline = false;  ///< network time does not come by itself
  int speed = 1;         ///< the daemon's clock runs that many times faster
  bool sandbox = true;
  std::string log;   ///< desk-tv's own log; paths.TvLog() unless told
  int readyFd = -1;  ///< gets "ready" or "failed: why" once that is known; -1 for none

  /// Throws DeskError (Usage).
  static TvOptions Parse(int argc, const char* const* argv);
  static const char* HelpText();
};

}  // namespace desk::tv
