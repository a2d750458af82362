// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <string>

namespace desk::cli {

/// A progress bar on one line of a terminal.
class ProgressBar {
 public:
  ProgressBar(std::ostream& out, std::string label) : m_out(out), m_label(std::move(label)) {}
  ~ProgressBar() { Clear(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// Values outside 0 to 100 are clamped.
  void Show(int percent);
  /// Erases the bar, if it is shown.
  void Clear();

 private:
  std::ostream& m_out;
  const std::string m_label;
  bool m_shown = false;
};

}  // namespace desk::cli
