// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <map>
#include <string>

#include "tv/router.h"

namespace desk::tv {

/// Which app answers a named operation: op.*. A desk has no apps of its own for them, so an
/// operation that was never set, or was reset, has none. Ends with the power. Main loop only.
class Operations {
 public:
  explicit Operations(Router& router);

  void Clear() { m_apps.clear(); }
  /// As the reply of op.list has it in `operations`.
  Json::Value Dump() const;

 private:
  std::map<std::string, std::string> m_apps;  ///< an empty app is one that was set
};

}  // namespace desk::tv
