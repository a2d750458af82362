// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <iosfwd>
#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/cli/explain_effects.h"

namespace desk::cli {

struct Explanation {
  Ruling ruling;
  std::vector<Effect> effects;
  std::vector<std::string> state;    ///< of an installed package: what is wrong on this desk
  std::vector<std::string> changes;  ///< compared with the daemon's record; may be empty
  std::vector<Finding> findings;
};

void PrintExplanation(std::ostream& out, const PackageFacts& package,
                      const Explanation& explanation);
Json::Value ToJson(const PackageFacts& package, const Explanation& explanation);

}  // namespace desk::cli
