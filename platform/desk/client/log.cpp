// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <dlog.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <string>

#include "desk/client/environment.h"
#include "desk/client/faults.h"
#include "desk/common/timestamp.h"

namespace desk::client {
namespace {

// Without a desk, or when the log cannot be opened, the log goes to standard error.
int OpenLog() {
  const std::string& path = Environment::Get().log;
  const int fd =
      path.empty() ? -1 : open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  return fd < 0 ? STDERR_FILENO : fd;
}

char LevelLetter(int prio) {
  constexpr char LETTERS[] = "??VDIWEF";
  return prio >= 0 && prio < static_cast<int>(sizeof(LETTERS)) - 1 ? LETTERS[prio] : '?';
}

// UTC like the journal: the daemon changes its own time zone while it runs.
std::string Head(int prio, const char* tag) {
  const std::string time = FormatTimestamp(WallClock());
  char head[96];
  std::snprintf(head, sizeof(head), "%s %s %5d %5ld %c/", time.substr(5, 5).c_str(),
                time.substr(11, 12).c_str(), static_cast<int>(getpid()), syscall(SYS_gettid),
                LevelLetter(prio));
  return std::string(head) + (tag == nullptr ? "" : tag) + ": ";
}

__attribute__((format(printf, 1, 0))) std::string FormatText(const char* format, va_list args) {
  va_list again;
  va_copy(again, args);
  char brief[1024];
  const int size = std::vsnprintf(brief, sizeof(brief), format, args);
  std::string text;
  if (size > 0 && static_cast<std::size_t>(size) < sizeof(brief)) {
    text.assign(brief, static_cast<std::size_t>(size));
  } else if (size > 0) {
    text.resize(static_cast<std::size_t>(size) + 1);
    std::vsnprintf(text.data(), text.size(), format, again);
    text.pop_back();
  }
  va_end(again);
  return text;
}

// Writes a record as one line: drops the newline at its end and escapes those inside.
void AppendOneLine(std::string& line, const std::string& text) {
  const bool closed = !text.empty() && text.back() == '\n';
  const std::size_t size = text.size() - (closed ? 1 : 0);
  for (std::size_t i = 0; i < size; ++i) {
    if (text[i] == '\n') {
      line += "\\n";
    } else {
      line += text[i];
    }
  }
  line += '\n';
}

int WriteLine(const std::string& line) {
  static const int fd = OpenLog();
  ssize_t written = 0;
  do {
    written = write(fd, line.data(), line.size());
  } while (written < 0 && errno == EINTR);
  return static_cast<int>(written);
}

}  // namespace
}  // namespace desk::client

int __dlog_print(log_id_t /*log_id*/, int prio, const char* tag, const char* fmt, ...) {
  const auto fault = desk::client::CheckFault("__dlog_print", -1);
  if (fault.has_value()) {
    return *fault;
  }
  std::string line = desk::client::Head(prio, tag);
  va_list args;
  va_start(args, fmt);
  desk::client::AppendOneLine(line, desk::client::FormatText(fmt, args));
  va_end(args);
  return desk::client::WriteLine(line);
}
