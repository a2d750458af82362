// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "fake/control/packages.h"

/// The paths through the daemon on which the sweep lets calls fail.
namespace fault {

struct Path {
  std::string name;  ///< letters only, because it is part of a test name
  /// Packages installed before, with their rows in the store.
  std::vector<fake::Package> stored;
  /// Runs before the daemon starts. May be empty.
  std::function<void()> before;
  /// Runs in the main loop before the fault is active. May be empty.
  std::function<void()> prepare;
  /// Runs in the main loop; empty when the path is the start of the process itself.
  std::function<void()> run;
  /// Network time is set before `prepare`, while the daemon is idle. Without it the scheduler does
  /// nothing: for paths on which records run while the scheduler would be working.
  bool hasNetworkTime = true;
  /// The two tasks race on this path, so each run differs: it runs many times, but without a fault
  /// in any call.
  bool isRace = false;

  bool IsStart() const { return !run; }
};

const std::vector<Path>& Paths();
const Path& FindPath(const std::string& name);

}  // namespace fault
