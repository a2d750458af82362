// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ctime>
#include <string>

namespace desk {

/// A time in UTC with milliseconds: "2026-11-21T16:10:03.123Z". Callable from any thread, like all
/// functions here.
std::string UtcText(const timespec& time);
/// A time in the local zone, as the platform's log shows it: "11-21 16:10:03.123".
std::string LogText(const timespec& time);

/// The current time by this process's clock.
timespec TimeOfDay();

}  // namespace desk
