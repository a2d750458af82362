// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <iosfwd>
#include <string>
#include <vector>

#include "cli/explain_effects.h"

namespace desk {

struct Explanation {
  Ruling ruling;
  Effects effects;
  std::vector<std::string> changes;  ///< against the record that the daemon holds; may be empty
};

void PrintExplanation(std::ostream& out, const PackageFacts& package,
                      const Explanation& explanation);
Json::Value ToJson(const PackageFacts& package, const Explanation& explanation);

}  // namespace desk
