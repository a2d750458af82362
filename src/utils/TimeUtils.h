// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ctime>
#include <string>

/// Points in time as the UTC text that records carry, 1970-01-01T00:00:00Z.
namespace TimeUtils {

/// Seconds since the epoch, 0 for an empty text. Malformed text is not refused: what was read up to
/// the fault counts, the rest is zero. Sets the time zone of the whole process to UTC.
time_t GetEpochTime(const std::string& rTime);

/// pTime must not be null. Empty for a time whose year no int holds. Callable from any thread.
std::string GetUTCTimeString(const time_t* pTime);

}  // namespace TimeUtils
