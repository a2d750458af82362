// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/client/journal.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "desk/client/environment.h"
#include "desk/common/timestamp.h"

namespace desk::client {
namespace {

constexpr char LINE_START[] = "{\"seq\":";
constexpr std::size_t USUAL_LINE = 256;
constexpr std::streamoff TAIL_BYTES = 65536;  // more than all calls that can be in progress

// Lines are in the order in which calls ended, so the last line need not have the last number.
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

// The kernel names the first thread after the program.
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

void Journal::Begin(platform::CallRecord& record, const platform::Value* args, std::size_t count) {
  record.number = ++m_lastSeq;
  std::string& line = record.text;
  line.reserve(USUAL_LINE);
  line += LINE_START + std::to_string(record.number);
  line += ",\"time\":\"" + FormatTimestamp(WallClock()) + "\",\"thread\":";
  platform::AppendQuoted(line, ThreadName());
  line += ",\"call\":";
  platform::AppendQuoted(line, record.name);
  line += ",\"args\":[";
  for (std::size_t i = 0; i < count; ++i) {
    AddOutput(record, args[i]);
  }
}

void Journal::AddOutput(platform::CallRecord& record, const platform::Value& value) {
  if (record.text.back() != '[') {
    record.text += ',';
  }
  platform::AppendJson(record.text, value);
}

void Journal::End(platform::CallRecord& record, const platform::Value& result) {
  record.text += "],\"result\":";
  platform::AppendJson(record.text, result);
  record.text += "}\n";
  m_file.Append(record.text);
}

}  // namespace desk::client
