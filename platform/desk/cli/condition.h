// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>

#include "desk/cli/jq.h"

namespace desk::cli {

/// What `tv wait` waits for: a jq expression on the dump. It holds when one of its values is
/// neither false nor null. An expression that ends with an error (as it may while the dump is not
/// complete) does not hold.
class Condition {
 public:
  /// Throws Failure (Usage) when the expression is not a jq program.
  explicit Condition(std::string expression);

  bool Holds(const Json::Value& dump);

  /// Throws Failure (Usage) when the expression reads a member of the dump that no dump has: it
  /// would wait in vain. Detected by giving the dump such a member and comparing the results, so
  /// a member of another object with the same name is no obstacle.
  void CheckMembers(const Json::Value& dump);

  /// Why it does not hold, in one line: the values of the members of the dump that it names.
  std::string Missing(const Json::Value& dump);

 private:
  const std::string m_expression;
  Jq m_program;
};

}  // namespace desk::cli
