// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace desk {

/// A file that several threads and processes append whole lines to. Each line is one write, so
/// lines never mix. Callable from any thread.
class LineLog {
 public:
  /// Creates the file when it is absent. When it cannot be opened, Append has no effect: a log
  /// never stops the work.
  explicit LineLog(const std::string& path);
  ~LineLog();
  LineLog(const LineLog&) = delete;
  LineLog& operator=(const LineLog&) = delete;

  /// Adds a newline unless the line ends with one.
  void Append(const std::string& line);

 private:
  const int m_fd;
};

}  // namespace desk
