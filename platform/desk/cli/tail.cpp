// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "cli/tail.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <thread>

namespace desk {
namespace {

constexpr std::chrono::milliseconds PERIOD(50);

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
  std::vector<std::string> lines;
  if (!OpenWhenChanged()) {
    return lines;
  }
  char buffer[65536];
  ssize_t count = 0;
  while ((count = pread(m_fd, buffer, sizeof buffer, m_offset)) > 0) {
    m_offset += count;
    m_rest.append(buffer, static_cast<size_t>(count));
  }
  size_t start = 0;
  for (size_t end = 0; (end = m_rest.find('\n', start)) != std::string::npos; start = end + 1) {
    lines.push_back(m_rest.substr(start, end - start));
  }
  m_rest.erase(0, start);
  return lines;
}

void ReadLines(const std::string& path, bool follow,
               const std::function<bool(const std::vector<std::string>&)>& function) {
  Tail tail(path);
  while (function(tail.Read()) && follow) {
    std::this_thread::sleep_for(PERIOD);
  }
}

}  // namespace desk
