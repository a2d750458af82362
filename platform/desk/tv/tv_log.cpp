// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/tv_log.h"

#include <unistd.h>

#include <cstdio>

#include "common/timestamp.h"

namespace desk::tv {

TvLog::TvLog(const std::string& path) : m_file(path), m_terminal(isatty(STDERR_FILENO) == 1) {}

void TvLog::Say(const std::string& text) {
  m_file.Append(UtcText(TimeOfDay()) + " " + text);
  if (m_terminal) {
    std::fprintf(stderr, "%s\n", text.c_str());
  }
}

}  // namespace desk::tv
