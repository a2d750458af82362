// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/log.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "fake/control/log_levels.h"
#include "fake/platform_call.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct State {
  const bool echo{std::getenv("ORV_TEST_LOG") != nullptr};
  std::mutex mutex;
  std::vector<LogRecord> records;  // guarded by mutex
  std::vector<LogLevel> levels;    // guarded by mutex
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

__attribute__((format(printf, 1, 0))) std::string Format(const char* format, std::va_list args) {
  std::va_list again;
  va_copy(again, args);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller has started it
  const int length = std::vsnprintf(nullptr, 0, format, args);
  std::string text(length < 0 ? 0 : static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

/// Where the head "path: function(line) > " ends; 0 when there is none.
std::size_t HeadLength(const std::string& text) {
  const std::string end = ") > ";
  for (std::size_t at = text.find(end); at != std::string::npos; at = text.find(end, at + 1)) {
    if (at > 0 && std::isdigit(static_cast<unsigned char>(text[at - 1])) != 0) {
      return at + end.size();
    }
  }
  return 0;
}

/// "[Info]" of "head > [Info] text".
std::string LevelWord(const std::string& text) {
  const std::size_t begin = HeadLength(text);
  if (begin >= text.size() || text[begin] != '[') {
    return "";
  }
  const std::size_t end = text.find(']', begin);
  return end == std::string::npos ? "" : text.substr(begin, end - begin + 1);
}

/// With the mutex held.
void NoteLevel(std::vector<LogLevel>& levels, const LogRecord& record) {
  const std::string word = LevelWord(record.text);
  const bool known = std::any_of(levels.begin(), levels.end(), [&](const LogLevel& level) {
    return level.priority == record.priority && level.word == word;
  });
  if (!known) {
    levels.push_back({record.priority, word, WithoutHead(record.text)});
  }
}

void Append(int priority, const char* tag, const std::string& text) {
  LogRecord record;
  record.priority = priority;
  record.tag = tag == nullptr ? "null" : tag;
  record.text = text;
  record.thread = ThreadName();
  record.threadID = std::this_thread::get_id();
  State& state = GetState();
  if (state.echo) {
    std::fputs(text.c_str(), stderr);
  }
  const std::lock_guard<std::mutex> lock(state.mutex);
  record.seq = NextSequence();
  NoteLevel(state.levels, record);
  state.records.push_back(record);
}

}  // namespace

std::vector<LogRecord> Logs() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.records;
}

std::string WithoutHead(const std::string& text) {
  const std::size_t head = HeadLength(text);
  if (head == 0) {
    return text;
  }
  const bool newline = text.back() == '\n';
  return text.substr(head, text.size() - head - (newline ? 1 : 0));
}

std::vector<std::string> LogTexts() {
  std::vector<std::string> texts;
  for (const LogRecord& record : Logs()) {
    texts.push_back(WithoutHead(record.text));
  }
  return texts;
}

std::vector<std::string> LogTexts(int priority) {
  std::vector<std::string> texts;
  for (const LogRecord& record : Logs()) {
    if (record.priority == priority) {
      texts.push_back(WithoutHead(record.text));
    }
  }
  return texts;
}

void ClearLog() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.records.clear();
}

std::vector<LogLevel> LogLevels() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.levels;
}

void ResetLog() {
  ClearLog();
}

}  // namespace fake

int __dlog_print(log_id_t, int prio, const char* tag, const char* fmt, ...) {
  if (const auto fault = fake::TakeFault("__dlog_print")) {
    return *fault;
  }
  std::va_list args;
  va_start(args, fmt);
  const std::string text = fake::Format(fmt, args);
  va_end(args);
  fake::Append(prio, tag, text);
  return static_cast<int>(text.size());
}
