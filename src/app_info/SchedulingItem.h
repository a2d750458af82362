// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

/// A service app as the scheduler picked it: copied out of its record, not kept in step with it.
struct SchedulingItem {
  std::string package_id;
  std::string service_id;       ///< what is launched and terminated
  std::string expiration_date;  ///< next due time as UTC text; empty is due at once
};
