// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "desk/common/timestamp.h"

namespace desk::cli {

/// "1 restart", "2 restarts".
std::string Plural(std::int64_t count, const std::string& noun);

/// A duration in its two greatest units: "42 minutes", "1 hour 5 minutes". Seconds are left out
/// from ten minutes on; a negative duration counts as none.
std::string DurationText(Timestamp duration);

/// What --since takes: a time as the logs have it ("2026-11-21T00:34:58Z"), or how long before now
/// ("90", "90s", "10m", "2h", "1d"). Throws Failure (Usage) for anything else.
Timestamp ParseSince(const std::string& text, Timestamp now);

}  // namespace desk::cli
