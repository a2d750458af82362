// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/timestamp.h"

#include <cstdio>
#include <ctime>

namespace desk {

Timestamp WallClock() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return std::chrono::duration_cast<Timestamp>(std::chrono::seconds(now.tv_sec) +
                                               std::chrono::nanoseconds(now.tv_nsec));
}

std::string FormatTimestamp(Timestamp time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const std::time_t whole = seconds.count();
  std::tm parts{};
  gmtime_r(&whole, &parts);
  char day[32];
  char text[48];
  std::strftime(day, sizeof(day), "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text, sizeof(text), "%s.%03dZ", day, static_cast<int>((time - seconds).count()));
  return text;
}

std::optional<Timestamp> ParseTimestamp(const std::string& text) {
  std::tm parts{};
  const char* rest = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  if (rest == nullptr) {
    return std::nullopt;
  }
  int thousandths = 0;
  int used = 0;
  if (std::sscanf(rest, ".%3d%n", &thousandths, &used) == 1 && used == 4) {
    rest += used;
  }
  if (std::string(rest) != "Z") {
    return std::nullopt;
  }
  return std::chrono::seconds(timegm(&parts)) + Timestamp(thousandths);
}

}  // namespace desk
