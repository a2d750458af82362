// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include "desk/cli/verdict.h"

namespace desk::cli {

/// The schedule of the service apps: `apps[]` of `app`, `package`, `due` (its text, empty when the
/// app is always due), `due_in` (seconds; 0 or absent when it is due), `last_launch` (a time),
/// `running`, `pid`, `end` (how its last run ended); `waits_for`; `next_tick` (a time) and
/// `next_tick_in` (seconds) while the timer runs.
Json::Value DescribeSchedule(const Facts& facts);

}  // namespace desk::cli
