// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

#include "fault/child.h"

/// The expected effects of failures. The rule: an error line reports each failure, the daemon keeps
/// running and handles later packages, and no handle stays open. Every exception is in one of these
/// tables, with its reason.
namespace fault {

/// A failure that is reported by another line, or by none.
struct LogException {
  std::string call;
  std::string args;  ///< part of the call's text; empty for all
  std::string line;  ///< begin of the line that reports it; empty for none
  std::string reason;
};
const std::vector<LogException>& LogExceptions();

/// A failure at start after which the running daemon does not handle a new package.
struct MissedPackage {
  std::string call;
  std::string args;
  bool onlyForGood = false;  ///< a temporary failure has no such effect
  std::string reason;
};
const std::vector<MissedPackage>& MissedPackages();

/// Handles that a path leaves open without any fault, or with a fault of the call.
struct Leak {
  std::string path;  ///< empty for all
  std::string call;  ///< that fails; empty for none
  std::string kind;
  std::string reason;
};
const std::vector<Leak>& Leaks();

/// The results to let the call fail with. Empty for a call that has no failing result.
std::vector<int> ResultsOf(const std::string& call);

/// What is wrong with the run, compared with the run without a fault. Empty when everything is as
/// expected.
std::vector<std::string> WhatIsWrong(const Request& request, const Report& report,
                                     const Report& faultless);
/// The same for a start after the run.
std::vector<std::string> WhatIsWrongAfterRestart(const Report& report);

}  // namespace fault
