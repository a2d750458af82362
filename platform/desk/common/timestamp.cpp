// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/timestamp.h"

#include <cstdio>

namespace desk {
namespace {

std::string Milliseconds(const timespec& time) {
  char text[8];
  std::snprintf(text, sizeof text, ".%03d", static_cast<int>(time.tv_nsec / 1000000 % 1000));
  return text;
}

}  // namespace

std::string UtcText(const timespec& time) {
  std::tm parts{};
  gmtime_r(&time.tv_sec, &parts);
  char date[40];
  const std::size_t size = std::strftime(date, sizeof date, "%Y-%m-%dT%H:%M:%S", &parts);
  return std::string(date, size) + Milliseconds(time) + "Z";
}

std::string LogText(const timespec& time) {
  std::tm parts{};
  localtime_r(&time.tv_sec, &parts);
  char date[40];
  const std::size_t size = std::strftime(date, sizeof date, "%m-%d %H:%M:%S", &parts);
  return std::string(date, size) + Milliseconds(time);
}

timespec TimeOfDay() {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return now;
}

}  // namespace desk
