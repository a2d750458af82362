// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/line_log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace desk {

LineLog::LineLog(const std::string& path)
    : m_fd(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644)) {}

LineLog::~LineLog() {
  if (m_fd >= 0) {
    close(m_fd);
  }
}

void LineLog::Append(const std::string& line) {
  if (m_fd < 0) {
    return;
  }
  std::string whole;
  const bool complete = !line.empty() && line.back() == '\n';
  if (!complete) {
    whole = line + '\n';
  }
  const std::string& text = complete ? line : whole;
  ssize_t written = 0;
  do {
    written = write(m_fd, text.data(), text.size());
  } while (written < 0 && errno == EINTR);
}

}  // namespace desk
