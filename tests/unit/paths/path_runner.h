// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "fault/paths.h"

/// Runs paths of the daemon and records what it does on them.
namespace paths {

/// A platform call on the path, without its result.
struct Use {
  std::string name;
  std::string text;           ///< "vconf_get_int(db/x)"
  int before = 0;             ///< earlier calls of the same name
  bool isOfOneThread = true;  ///< one thread makes all calls of the name on the path
};

struct Record {
  bool reachedMainLoop = false;
  /// The calls and log records of each thread in order, and the state that the daemon leaves
  /// behind.
  std::string text;
  std::vector<Use> uses;
};

/// Runs the path in this process, which must not have run a daemon before. `arm` is called directly
/// before the path begins, for a start before the process's entry point; it may be empty.
Record RunPath(const fault::Path& path, const std::function<void()>& arm = {});

}  // namespace paths
