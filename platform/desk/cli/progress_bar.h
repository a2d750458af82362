// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <string>

namespace desk {

/// A bar that is drawn over itself on one line of a terminal.
class ProgressBar {
 public:
  ProgressBar(std::ostream& out, std::string label) : m_out(out), m_label(std::move(label)) {}
  ~ProgressBar() { Clear(); }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// percent is taken as 0 to 100.
  void Show(int percent);
  /// Takes the bar away. Without effect when none is shown.
  void Clear();

 private:
  std::ostream& m_out;
  const std::string m_label;
  bool m_shown = false;
};

}  // namespace desk
