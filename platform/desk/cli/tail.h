// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace desk::cli {

/// Reads a text file that grows, in whole lines. A file that does not exist yet is empty; one that
/// was replaced or truncated is read from its start again.
class Tail {
 public:
  explicit Tail(std::string path) : m_path(std::move(path)) {}
  ~Tail();
  Tail(const Tail&) = delete;
  Tail& operator=(const Tail&) = delete;

  /// The lines that were completed since the last call, without their newlines.
  std::vector<std::string> Read();
  bool Exists() const;

 private:
  bool OpenWhenChanged();

  const std::string m_path;
  int m_fd = -1;
  unsigned long long m_inode = 0;
  long long m_offset = 0;
  std::string m_rest;  ///< a line that is not complete yet
};

/// Hands each batch of new lines to the function: once, or with follow twenty times a second until
/// the function returns false.
void ReadLines(const std::string& path, bool follow,
               const std::function<bool(const std::vector<std::string>&)>& function);

/// The whole lines among the last bytes of a file; none when it does not exist.
std::vector<std::string> LastLines(const std::string& path, std::size_t bytes);

}  // namespace desk::cli
