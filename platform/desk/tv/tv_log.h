// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "common/line_log.h"

namespace desk::tv {

/// desk-tv's own log: one line per entry, with the time. Callable from any thread.
class TvLog {
 public:
  explicit TvLog(const std::string& path);

  /// Also prints the text to standard error when that is a terminal.
  void Say(const std::string& text);

 private:
  LineLog m_file;
  const bool m_terminal;
};

}  // namespace desk::tv
