// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace desk {

/// Reads a text file that grows, whole lines only. A file that is not there yet is empty; one that
/// was replaced or cut short is read from its start again.
class Tail {
 public:
  explicit Tail(std::string path) : m_path(std::move(path)) {}
  ~Tail();
  Tail(const Tail&) = delete;
  Tail& operator=(const Tail&) = delete;

  /// The lines that have come since the last call, without their newlines.
  std::vector<std::string> Read();
  bool Exists() const;

 private:
  bool OpenWhenChanged();

  const std::string m_path;
  int m_fd = -1;
  unsigned long long m_inode = 0;
  long long m_offset = 0;
  std::string m_rest;  ///< a line that is not whole yet
};

/// Hands each batch of new lines to the function; with follow again and again until the function
/// returns false, else once. Looks twenty times a second.
void ReadLines(const std::string& path, bool follow,
               const std::function<bool(const std::vector<std::string>&)>& function);

}  // namespace desk
