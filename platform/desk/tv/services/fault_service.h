// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include "desk/common/faults.h"
#include "desk/common/paths.h"
#include "desk/tv/router.h"

namespace desk::tv {

/// Makes platform calls of the daemon fail: fault.*. Faults survive a restart of the daemon and
/// last until power-off. Main loop's thread only.
class FaultService {
 public:
  /// Creates an empty table. Throws DeskError.
  FaultService(Router& router, const DeskPaths& paths);

  void Clear() { m_table.Clear(); }
  /// As `faults` in the reply of fault.list.
  Json::Value Dump() const;

 private:
  FaultTable m_table;
};

}  // namespace desk::tv
