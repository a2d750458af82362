// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

#include "fault/child.h"

/// What is settled about failures. The rule: an error line tells of each, the daemon goes on, a
/// package that comes later is taken in, and no handle stays open. Everything else stands in one of
/// these tables, with its reason.
namespace fault {

/// A failure that another line tells, or none.
struct Telling {
  std::string call;
  std::string args;  ///< part of the call's text; empty for all
  std::string line;  ///< begin of the line that tells it; empty when no line does
  std::string reason;
};
const std::vector<Telling>& Tellings();

/// A failure at start after which the running daemon does not take in a package.
struct Deafness {
  std::string call;
  std::string args;
  bool onlyForGood = false;  ///< a failure that passes is got over
  std::string reason;
};
const std::vector<Deafness>& Deafnesses();

/// Handles that a road leaves open without any fault, or with a fault of the call.
struct Leak {
  std::string road;  ///< empty for all
  std::string call;  ///< that fails; empty for none
  std::string kind;
  std::string reason;
};
const std::vector<Leak>& Leaks();

/// The results that the call is made to fail with. None for one that has no result to fail with.
std::vector<int> ResultsOf(const std::string& call);

/// What is wrong with the journey, compared with the one without a fault. Empty when all is as it
/// should be.
std::vector<std::string> WhatIsWrong(const Order& order, const Report& report,
                                     const Report& faultless);
/// The same for a start after the journey.
std::vector<std::string> WhatIsWrongAfterRestart(const Report& report);

}  // namespace fault
