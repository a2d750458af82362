// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "cli/journal_view.h"

#include <algorithm>

#include "cli/table.h"
#include "common/desk_error.h"
#include "common/json.h"

namespace desk {
namespace {

constexpr size_t SEQ_WIDTH = 4;
constexpr size_t THREAD_WIDTH = 6;

}  // namespace

std::vector<Json::Value> SortedEntries(const std::vector<std::string>& lines) {
  std::vector<Json::Value> entries;
  for (const auto& line : lines) {
    try {
      Json::Value entry = ParseJson(line);
      if (entry.isObject() && entry["seq"].isUInt64()) {
        entries.push_back(std::move(entry));
      }
    } catch (const DeskError&) {
      // A line that was cut off when the daemon was killed.
    }
  }
  std::stable_sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
    return a["seq"].asUInt64() < b["seq"].asUInt64();
  });
  return entries;
}

std::string JournalText(const Json::Value& entry) {
  const std::string seq = entry["seq"].asString();
  const std::string thread = entry["thread"].asString();
  std::string line(SEQ_WIDTH - std::min(SEQ_WIDTH, seq.size()), ' ');
  line += seq + " " + thread;
  line += std::string(THREAD_WIDTH - std::min(THREAD_WIDTH, DisplayWidth(thread)), ' ');
  line += " " + entry["call"].asString() + "(";
  for (Json::ArrayIndex i = 0; i < entry["args"].size(); ++i) {
    line += (i == 0 ? "" : ", ") + FormatJson(entry["args"][i]);
  }
  return line + ") = " + FormatJson(entry["result"]);
}

}  // namespace desk
