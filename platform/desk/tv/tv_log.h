// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/line_log.h"

namespace desk::tv {

/// What desk-tv itself did, one line each with the time. Callable from any thread.
class TvLog {
 public:
  explicit TvLog(const std::string& path);

  /// Goes to standard error too when that is a terminal.
  void Say(const std::string& text);

 private:
  LineLog m_file;
  const bool m_terminal;
};

}  // namespace desk::tv
