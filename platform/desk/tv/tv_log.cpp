// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/tv_log.h"

#include <unistd.h>

#include <cstdio>

namespace desk::tv {

TvLog::TvLog(const std::string& path) : m_file(path), m_terminal(isatty(STDERR_FILENO) == 1) {}

void TvLog::SetClock(Timestamp since, Timestamp base, int speed) {
  m_since = since.count();
  m_base = base.count();
  m_speed = speed;
}

Timestamp TvLog::Now() const {
  return Timestamp(m_base) + (WallClock() - Timestamp(m_since)) * m_speed.load();
}

void TvLog::Say(const std::string& text) {
  m_file.Append(FormatTimestamp(Now()) + " " + text);
  if (m_terminal) {
    std::fprintf(stderr, "%s\n", text.c_str());
  }
}

}  // namespace desk::tv
