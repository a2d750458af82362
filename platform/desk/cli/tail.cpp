// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/tail.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <thread>

namespace desk::cli {
namespace {

constexpr std::chrono::milliseconds PERIOD(50);

/// Removes the whole lines from the text and returns them.
std::vector<std::string> TakeLines(std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  for (size_t end = 0; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    lines.push_back(text.substr(start, end - start));
  }
  text.erase(0, start);
  return lines;
}

}  // namespace

Tail::~Tail() {
  if (m_fd >= 0) {
    close(m_fd);
  }
}

bool Tail::Exists() const {
  struct stat status {};
  return stat(m_path.c_str(), &status) == 0;
}

bool Tail::OpenWhenChanged() {
  struct stat status {};
  if (stat(m_path.c_str(), &status) != 0) {
    return m_fd >= 0;
  }
  if (m_fd >= 0 && status.st_ino == m_inode && status.st_size >= m_offset) {
    return true;
  }
  if (m_fd >= 0) {
    close(m_fd);
  }
  m_fd = open(m_path.c_str(), O_RDONLY | O_CLOEXEC);
  m_inode = status.st_ino;
  m_offset = 0;
  m_rest.clear();
  return m_fd >= 0;
}

std::vector<std::string> Tail::Read() {
  if (!OpenWhenChanged()) {
    return {};
  }
  char buffer[65536];
  ssize_t count = 0;
  while ((count = pread(m_fd, buffer, sizeof buffer, m_offset)) > 0) {
    m_offset += count;
    m_rest.append(buffer, static_cast<size_t>(count));
  }
  return TakeLines(m_rest);
}

void ReadLines(const std::string& path, bool follow,
               const std::function<bool(const std::vector<std::string>&)>& function) {
  Tail tail(path);
  while (function(tail.Read()) && follow) {
    std::this_thread::sleep_for(PERIOD);
  }
}

std::vector<std::string> LastLines(const std::string& path, std::size_t bytes) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  if (!file) {
    return {};
  }
  const auto size = static_cast<std::streamoff>(file.tellg());
  // One byte more tells whether the first line is whole.
  const std::streamoff start =
      std::max<std::streamoff>(0, size - static_cast<std::streamoff>(bytes) - 1);
  file.seekg(start);
  std::string text(static_cast<size_t>(size - start), '\0');
  file.read(text.data(), size - start);
  text.resize(static_cast<size_t>(file.gcount()));
  if (start > 0) {
    const auto newline = text.find('\n');
    text.erase(0, newline == std::string::npos ? text.size() : newline + 1);
  }
  return TakeLines(text);
}

}  // namespace desk::cli
