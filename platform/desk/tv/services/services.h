// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "desk/tv/services/needs.h"

namespace desk::tv {

/// All services but the settings keys and the faults, and the connections between them. Main loop
/// only.
class Services {
 public:
  /// Creates the services, which add their methods to the router. Throws DeskError.
  explicit Services(Needs needs);
  ~Services();

  /// Power-off: ends apps, unmounts images and drops volatile state. May block for a moment.
  void TurnOff();
  /// Power-on. Call it before the daemon is started.
  void TurnOn();
  /// How images are mounted, or why they cannot be.
  std::string DescribeMounts() const;

  /// Member of the dump to the function that encodes it.
  std::map<std::string, std::function<Json::Value()>> Dumps() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> m_parts;
};

}  // namespace desk::tv
