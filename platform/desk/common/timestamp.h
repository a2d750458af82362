// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace desk {

/// A moment of a wall clock, counted from 1970 in UTC. All logs of a desk use this clock.
using Timestamp = std::chrono::milliseconds;

/// The calling process's wall clock. In a process that runs faster it is the faster clock.
Timestamp WallClock();

/// "2026-11-21T00:34:58.850Z". Thread-safe.
std::string FormatTimestamp(Timestamp time);

/// Reads what FormatTimestamp() writes, with or without the fraction of a second. Any other text
/// gives nothing.
std::optional<Timestamp> ParseTimestamp(const std::string& text);

}  // namespace desk
