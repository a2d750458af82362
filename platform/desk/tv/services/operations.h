// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <map>
#include <optional>
#include <string>

#include "desk/tv/router.h"

namespace desk::tv {

/// Which app handles a named operation: op.*. The desk has no default handlers, so an operation
/// that was never set, or was reset, has no app. Lasts until power-off. Main loop only.
class Operations {
 public:
  explicit Operations(Router& router);

  void Clear() { m_apps.clear(); }
  /// As `operations` in the reply of op.list.
  Json::Value Dump() const;

 private:
  std::optional<std::string> Find(const std::string& operation) const;

  std::map<std::string, std::string> m_apps;  ///< operation to app; the app may be empty
};

}  // namespace desk::tv
