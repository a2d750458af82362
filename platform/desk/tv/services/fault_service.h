// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include "common/faults.h"
#include "common/paths.h"
#include "tv/router.h"

namespace desk::tv {

/// The methods fault.*: orders to the daemon's platform calls to fail. They outlast the daemon, not
/// the power. Main loop's thread only.
class FaultService {
 public:
  /// Makes the table anew. Throws DeskError.
  FaultService(Router& router, const DeskPaths& paths);

  void Clear() { m_table.Clear(); }
  /// An array as in fault.list.
  Json::Value Dump() const;

 private:
  FaultTable m_table;
};

}  // namespace desk::tv
