// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/progress_bar.h"

#include <algorithm>
#include <ostream>

namespace desk::cli {
namespace {

constexpr int WIDTH = 30;

}  // namespace

void ProgressBar::Show(int percent) {
  percent = std::clamp(percent, 0, 100);
  const int filled = percent * WIDTH / 100;
  m_out << '\r' << m_label << " [" << std::string(static_cast<size_t>(filled), '#')
        << std::string(static_cast<size_t>(WIDTH - filled), '.') << "] " << percent << "%\x1b[K"
        << std::flush;
  m_shown = true;
}

void ProgressBar::Clear() {
  if (m_shown) {
    m_out << "\r\x1b[K" << std::flush;
    m_shown = false;
  }
}

}  // namespace desk::cli
