// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "desk/tv/callers.h"
#include "desk/tv/options.h"
#include "desk/tv/power.h"
#include "desk/tv/router.h"
#include "desk/tv/tv_log.h"

namespace desk::tv {

/// What the process gives the television. The references outlive the television.
struct TvBase {
  const TvOptions& options;
  Router& router;
  CallerTable& callers;
  TvLog& log;
  std::string mounts;          ///< what EnterMountNamespace() returned
  std::string busAddress;      ///< on the machine
  std::string busSocket;       ///< on the machine
  std::function<void()> quit;  ///< ends the main loop
};

/// The television as a whole: creates the core and the services in the order of their dependencies
/// and connects them. Main loop's thread only.
class Television {
 public:
  /// Creates all parts, which add their methods to the router. Starts no process. Throws DeskError.
  explicit Television(const TvBase& base);
  ~Television();

  /// See Power.
  void TurnOn(Power::Done done);
  void GoDown(std::function<void()> done);

 private:
  struct Parts;

  void AddStatusMethods();
  Json::Value Status() const;
  Json::Value Dump() const;

  const TvBase m_base;
  const long m_startedAt;
  /// Member of the dump to the function that encodes it.
  std::map<std::string, std::function<Json::Value()>> m_dump;
  PowerHooks m_hooks;
  std::unique_ptr<Parts> m_parts;
  std::unique_ptr<Power> m_power;
};

}  // namespace desk::tv
