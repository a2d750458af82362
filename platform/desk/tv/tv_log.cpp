// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/tv_log.h"

#include <unistd.h>

#include <cstdio>
#include <ctime>

namespace desk::tv {

TvLog::TvLog(const std::string& path) : m_file(path), m_terminal(isatty(STDERR_FILENO) == 1) {}

void TvLog::Say(const std::string& text) {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  tm parts{};
  gmtime_r(&now.tv_sec, &parts);
  char date[32];
  std::strftime(date, sizeof(date), "%Y-%m-%dT%H:%M:%S", &parts);
  char fraction[32];
  std::snprintf(fraction, sizeof(fraction), ".%03ldZ ", now.tv_nsec / 1000000);
  m_file.Append(std::string(date) + fraction + text);
  if (m_terminal) {
    std::fprintf(stderr, "%s\n", text.c_str());
  }
}

}  // namespace desk::tv
