// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/journal_view.h"

#include <fnmatch.h>

#include <algorithm>

#include "desk/cli/table.h"
#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::cli {
namespace {

constexpr size_t SEQ_WIDTH = 4;
constexpr size_t THREAD_WIDTH = 6;

bool Matches(const std::string& pattern, const std::string& text) {
  return pattern.empty() || fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

/// The form of the daemon's log: "11-21 00:34:58.850".
std::string ShortTime(const Json::Value& entry) {
  const std::string time = entry["time"].asString();
  return TimeOf(entry) ? time.substr(5, 5) + " " + time.substr(11, 12) : "-";
}

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
      // The line was cut off when the daemon was killed.
    }
  }
  std::stable_sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) {
    return a["seq"].asUInt64() < b["seq"].asUInt64();
  });
  return entries;
}

std::optional<Timestamp> TimeOf(const Json::Value& entry) {
  return entry["time"].isString() ? ParseTimestamp(entry["time"].asString()) : std::nullopt;
}

std::string CallText(const Json::Value& entry) {
  std::string text = entry["call"].asString() + "(";
  for (Json::ArrayIndex i = 0; i < entry["args"].size(); ++i) {
    text += (i == 0 ? "" : ", ") + FormatJson(entry["args"][i]);
  }
  return text + ") = " + FormatJson(entry["result"]);
}

std::string JournalText(const Json::Value& entry) {
  const std::string seq = entry["seq"].asString();
  const std::string thread = entry["thread"].asString();
  return ShortTime(entry) + " " + std::string(SEQ_WIDTH - std::min(SEQ_WIDTH, seq.size()), ' ') +
         seq + " " + thread +
         std::string(THREAD_WIDTH - std::min(THREAD_WIDTH, DisplayWidth(thread)), ' ') + " " +
         CallText(entry);
}

bool JournalFilter::Wants(const Json::Value& entry) const {
  if (since) {
    const auto time = TimeOf(entry);
    if (!time || *time < *since) {
      return false;
    }
  }
  return Matches(call, entry["call"].asString()) && Matches(thread, entry["thread"].asString());
}

}  // namespace desk::cli
