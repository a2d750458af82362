// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/time_text.h"

#include <algorithm>
#include <map>

#include "desk/cli/failure.h"
#include "desk/common/numbers.h"

namespace desk::cli {
namespace {

constexpr std::int64_t MINUTE = 60;
constexpr std::int64_t HOUR = 60 * MINUTE;
constexpr std::int64_t DAY = 24 * HOUR;
constexpr std::int64_t LONGEST_IN_SECONDS = 10 * MINUTE;
constexpr std::int64_t MOST_SECONDS = 1000000 * DAY;

std::string TwoUnits(std::int64_t first, const std::string& noun, std::int64_t second,
                     const std::string& secondNoun) {
  return Plural(first, noun) + (second == 0 ? "" : " " + Plural(second, secondNoun));
}

}  // namespace

std::string Plural(std::int64_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string DurationText(Timestamp duration) {
  const std::int64_t seconds =
      std::max<std::int64_t>(0, std::chrono::duration_cast<std::chrono::seconds>(duration).count());
  if (seconds < MINUTE) {
    return Plural(seconds, "second");
  }
  if (seconds < LONGEST_IN_SECONDS) {
    return TwoUnits(seconds / MINUTE, "minute", seconds % MINUTE, "second");
  }
  if (seconds < HOUR) {
    return Plural(seconds / MINUTE, "minute");
  }
  if (seconds < DAY) {
    return TwoUnits(seconds / HOUR, "hour", seconds / MINUTE % 60, "minute");
  }
  return TwoUnits(seconds / DAY, "day", seconds / HOUR % 24, "hour");
}

Timestamp ParseSince(const std::string& text, Timestamp now) {
  if (const auto time = ParseTimestamp(text)) {
    return *time;
  }
  static const std::map<char, std::int64_t> units = {
      {'s', 1}, {'m', MINUTE}, {'h', HOUR}, {'d', DAY}};
  const auto unit = text.empty() ? units.end() : units.find(text.back());
  const std::string digits = unit == units.end() ? text : text.substr(0, text.size() - 1);
  const auto number = ReadUnsigned(digits);
  const std::int64_t factor = unit == units.end() ? 1 : unit->second;
  if (!number || *number > static_cast<std::uint64_t>(MOST_SECONDS / factor)) {
    throw Failure(Exit::Usage, "since is \"" + text +
                                   "\": give a time such as 2026-11-21T00:34:58Z, or how long ago: "
                                   "90s, 10m, 2h, 1d");
  }
  return now - std::chrono::seconds(static_cast<std::int64_t>(*number) * factor);
}

}  // namespace desk::cli
