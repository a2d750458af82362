// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/TimeUtils.h"

#include <cstdlib>
#include <iomanip>
#include <locale>
#include <sstream>

#include "common/Log.h"
#include "common/ORVConstants.h"

namespace {

constexpr size_t TIME_TEXT_SIZE = 42;

std::wstring Widen(const std::string& rText) {
  std::wstring sWide;
  // Sign-extended: a byte above 127 is never part of a time, whatever the text's encoding.
  for (const char character : rText) {
    sWide += static_cast<wchar_t>(static_cast<signed char>(character));
  }
  return sWide;
}

}  // namespace

time_t TimeUtils::GetEpochTime(const std::string& rTime) {
  ORV_LOG_DEBUG("[Debug] rTime : %s", rTime.c_str());
  if (rTime.empty()) {
    return 0;
  }

  std::wistringstream stream(Widen(rTime));
  stream.imbue(std::locale::classic());
  struct tm brokenDown = {};
  // The stream's state is not tested: malformed text gives the fields before the error.
  stream >> std::get_time(&brokenDown, EXPIRATION_TIME_FORMAT.c_str());
  // Process-wide and never undone: the daemon runs in UTC.
  setenv("TZ", "UTC", 1);
  return mktime(&brokenDown);
}

std::string TimeUtils::GetUTCTimeString(const time_t* pTime) {
  char buffer[TIME_TEXT_SIZE] = {};
  // Not gmtime(): its static result would be shared by all threads.
  struct tm brokenDown = {};
  const struct tm* pBrokenDown = gmtime_r(pTime, &brokenDown);
  // Null for a year that exceeds an int; the text then stays empty, which callers refuse.
  if (pBrokenDown != nullptr) {
    strftime(buffer, sizeof(buffer), "%Y-%m-%dT%XZ", pBrokenDown);
  }
  ORV_LOG_DEBUG("[Debug] timeUTCStr : %s", buffer);
  return buffer;
}
