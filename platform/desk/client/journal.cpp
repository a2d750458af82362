// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "client/journal.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "client/environment.h"
#include "common/timestamp.h"

namespace desk {
namespace {

constexpr char LINE_START[] = "{\"seq\":";
constexpr std::streamoff TAIL_BYTES = 65536;  // more than all calls that can be in progress

// Lines stand in the order in which calls ended, so the last one need not have the last number.
std::uint64_t LastSeq(const std::string& path) {
  std::ifstream file(path, std::ios::ate);
  if (!file) {
    return 0;
  }
  file.seekg(std::max<std::streamoff>(0, static_cast<std::streamoff>(file.tellg()) - TAIL_BYTES));
  std::uint64_t last = 0;
  const std::size_t head = sizeof(LINE_START) - 1;
  for (std::string line; std::getline(file, line);) {
    if (line.compare(0, head, LINE_START) == 0) {
      last = std::max<std::uint64_t>(last, std::strtoull(line.c_str() + head, nullptr, 10));
    }
  }
  return last;
}

// The first thread bears the name of the program, which says nothing of what it does.
std::string ThreadName() {
  if (syscall(SYS_gettid) == getpid()) {
    return "main";
  }
  char name[16] = "";
  pthread_getname_np(pthread_self(), name, sizeof(name));
  return name;
}

}  // namespace

Journal* Journal::Get() {
  // Never destroyed: threads may still call while the process ends.
  static Journal* const journal =
      Environment::Get().journal.empty() ? nullptr : new Journal(Environment::Get().journal);
  return journal;
}

Journal::Journal(const std::string& path) : m_lastSeq(LastSeq(path)), m_file(path) {}

void Journal::Begin(Entry& entry) {
  entry.seq = ++m_lastSeq;
  entry.time = UtcText(TimeOfDay());
}

void Journal::Write(const Entry& entry) {
  std::string line = LINE_START + std::to_string(entry.seq) + ",\"time\":\"" + entry.time + "\"";
  line += ",\"thread\":";
  AppendQuoted(line, ThreadName());
  line += ",\"call\":";
  AppendQuoted(line, entry.call);
  line += ",\"args\":[" + entry.args + "],\"result\":" + entry.result + "}\n";
  m_file.Append(line);
}

void AppendQuoted(std::string& out, const std::string& text) {
  out += '"';
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escaped[8];
      std::snprintf(escaped, sizeof(escaped), "\\u%04x", static_cast<unsigned>(c));
      out += escaped;
    } else {
      out += c;
    }
  }
  out += '"';
}

}  // namespace desk
