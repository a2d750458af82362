// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "fake/control/packages.h"

/// The roads through the daemon on which calls are made to fail.
namespace fault {

struct Road {
  std::string name;  ///< of letters only: it stands in the name of a test
  /// Installed before, with their rows in the store.
  std::vector<fake::Package> stored;
  /// On the television, before the daemon starts. May be empty.
  std::function<void()> before;
  /// In the main loop, up to the point where the faults begin. May be empty.
  std::function<void()> prepare;
  /// In the main loop; empty when the road is the start of the process itself.
  std::function<void()> travel;
  /// Network time comes before `prepare`, when the daemon is at rest. Without it the scheduler does
  /// nothing: for roads on which records run while it would be at work.
  bool hasNetworkTime = true;
  /// The two tasks race on it, so that it is another road each time: it is travelled often, but no
  /// call of it is made to fail.
  bool isRace = false;

  bool IsStart() const { return !travel; }
};

const std::vector<Road>& Roads();
const Road& FindRoad(const std::string& name);

}  // namespace fault
