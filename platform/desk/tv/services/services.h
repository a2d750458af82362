// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "common/paths.h"
#include "tv/callers.h"
#include "tv/router.h"

namespace desk::tv {

/// What the services need of the rest of the television. Everything lives longer than they.
struct ServiceNeeds {
  CallerTable& callers;
  std::string busAddress;  ///< on the machine
  std::string tools;       ///< directory of tv and desk-webapp
  std::function<void(const std::string& key, const std::string& value)> setKey;
  std::function<void(const std::string& line)> log;
};

/// Packages, web-app service, channel framework, TV service, apps, operations, message ports and
/// mounts, and how they hear of each other. Main loop only.
class Services {
 public:
  /// Makes them, which add their methods. Throws DeskError.
  Services(Router& router, const DeskPaths& paths, ServiceNeeds needs);
  ~Services();

  /// Power-off: ends apps, unmounts, forgets what ends with the power. May block for a moment.
  void TurnOff();
  /// Power-on, before the daemon is started.
  void TurnOn();
  /// How images are mounted, or why not.
  std::string DescribeMounts() const;

  /// Member of the dump to what gives it.
  std::map<std::string, std::function<Json::Value()>> Dumps() const;

 private:
  struct Parts;
  std::unique_ptr<Parts> m_parts;
};

}  // namespace desk::tv
