// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#include "desk/common/paths.h"
#include "desk/tv/callers.h"
#include "desk/tv/router.h"

namespace desk::tv {

/// What the services need from the rest of desk-tv. The references outlive every service.
struct Needs {
  Router& router;
  DeskPaths paths;
  CallerTable& callers;
  std::string busAddress;  ///< for processes outside the sandbox
  std::string tools;       ///< directory of `tv` and desk-webapp
  /// Sets a settings key to a string. Main loop only. May throw DeskError; `Services` passes its
  /// services a function that logs the error instead.
  std::function<void(const std::string& key, const std::string& value)> setKey;
  /// Adds a line to desk-tv's log. Callable from any thread.
  std::function<void(const std::string& line)> log;
};

}  // namespace desk::tv
