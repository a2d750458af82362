// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// A service app as the scheduler picked it: a copy of the record's values at that time.
struct SchedulingItem {
  std::string package_id;
  std::string service_id;       ///< what is launched and terminated
  std::string expiration_date;  ///< next due time as UTC text; empty means due at once
};
