// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "cli/jq.h"

namespace desk {

/// What `tv wait` waits for: a jq expression on the dump. It holds when one of its values is
/// neither false nor null. An error while it is evaluated (a member that is not there yet) is not
/// holding.
class Condition {
 public:
  /// Throws Failure (Usage) when the expression is no jq program.
  explicit Condition(std::string expression);

  bool Holds(const Json::Value& dump);

  /// One line: the parts of the expression that do not hold, each with the value that it has
  /// instead.
  std::string Missing(const Json::Value& dump) const;

 private:
  std::string m_expression;
  Jq m_program;
};

/// The expression cut where the language's precedence cuts it, for showing values. Works on the
/// text: what it does not understand stays whole.
struct ExpressionParts {
  std::string pipe;                ///< everything before the last "|" of the top level, or empty
  std::vector<std::string> parts;  ///< the rest, cut at "and" and "or"
};
ExpressionParts CutExpression(const std::string& expression);

/// What stands left of the part's comparison, or what the part looks through when it is a call of
/// any or all; empty when there is no such thing.
std::string LeftSide(const std::string& part);

}  // namespace desk
