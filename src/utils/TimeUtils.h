// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ctime>
#include <string>

/// Times as UTC text, in the form of records: 1970-01-01T00:00:00Z.
namespace TimeUtils {

/// Seconds since the epoch, 0 for an empty text. Malformed text is not refused: the fields before
/// the error count, the others are zero. Sets the time zone of the whole process to UTC.
time_t GetEpochTime(const std::string& rTime);

/// pTime is not null. Empty for a time whose year exceeds an int. Callable from any thread.
std::string GetUTCTimeString(const time_t* pTime);

}  // namespace TimeUtils
