// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/log_view.h"

#include <cctype>
#include <regex>

#include "desk/cli/failure.h"

namespace desk::cli {
namespace {

constexpr const char* LEVELS = "VDIWEF";

int Severity(char level) {
  const std::string levels = LEVELS;
  const auto at = levels.find(level);
  return at == std::string::npos ? static_cast<int>(levels.size()) : static_cast<int>(at);
}

}  // namespace

std::optional<LogRecord> ParseLogLine(const std::string& line) {
  static const std::regex form(
      R"(^(\d\d-\d\d \d\d:\d\d:\d\d\.\d+) +(\d+) +(\d+) ([A-Z?])/([^:]*): ?)");
  std::smatch match;
  if (!std::regex_search(line, match, form)) {
    return std::nullopt;
  }
  LogRecord record;
  record.time = match[1];
  record.pid = std::stoi(match[2]);
  record.tid = std::stoi(match[3]);
  record.level = match[4].str()[0];
  record.tag = match[5];
  record.text = match.suffix();
  return record;
}

Json::Value ToJson(const LogRecord& record) {
  Json::Value value;
  value["time"] = record.time;
  value["pid"] = record.pid;
  value["tid"] = record.tid;
  value["level"] = std::string(1, record.level);
  value["tag"] = record.tag;
  value["text"] = record.text;
  return value;
}

bool LogFilter::Wants(const std::string& line) const {
  if (line.find(text) == std::string::npos) {
    return false;
  }
  if (level == LEVELS[0]) {
    return true;
  }
  const auto record = ParseLogLine(line);
  return !record.has_value() || Severity(record->level) >= Severity(level);
}

char ParseLevel(const std::string& name) {
  const std::string names[] = {"verbose", "debug", "info", "warning", "error", "fatal"};
  std::string lower;
  for (const char c : name) {
    lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  }
  for (const auto& level : names) {
    if (!lower.empty() && level.compare(0, lower.size(), lower) == 0) {
      return static_cast<char>(std::toupper(static_cast<unsigned char>(level[0])));
    }
  }
  throw Failure(Exit::Usage, "\"" + name + "\" is not a level: give one of V, D, I, W, E, F");
}

}  // namespace desk::cli
