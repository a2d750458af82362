// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/condition.h"

#include <algorithm>
#include <regex>
#include <set>

#include "desk/cli/failure.h"
#include "desk/cli/time_text.h"
#include "desk/common/json.h"
#include "desk/common/nearest.h"

namespace desk::cli {
namespace {

constexpr size_t LONGEST_VALUE = 200;
constexpr const char* UNRELATED_MEMBER = "member that no expression names";

using Texts = std::set<std::string>;

Texts Matches(const std::string& text, const std::regex& form) {
  Texts found;
  for (std::sregex_iterator match(text.begin(), text.end(), form), end; match != end; ++match) {
    found.insert(match->str(1));
  }
  return found;
}

/// Every ".name" of the expression, whichever object it is a member of.
Texts MemberNames(const std::string& expression) {
  static const std::regex form(R"(\.([A-Za-z_]\w*))");
  return Matches(expression, form);
}

/// Every path of names: ".daemon.running".
Texts MemberPaths(const std::string& expression) {
  static const std::regex form(R"re(((?:\.[A-Za-z_]\w*|\["[^"\\]*"\])+))re");
  return Matches(expression, form);
}

/// Values that an expression is unlikely to treat as it treats null: it cannot index or measure the
/// first one, and compares the others with what it holds.
std::vector<Json::Value> Probes(const std::string& expression) {
  std::vector<Json::Value> probes = {true, Json::Value(Json::objectValue)};
  static const std::regex literal(R"re(("(?:[^"\\]|\\.)*"|\d+))re");
  for (const auto& text : Matches(expression, literal)) {
    try {
      probes.push_back(ParseJson(text));
    } catch (const std::exception&) {
      // jq's literals allow more than JSON's, such as "\(.a)".
    }
  }
  return probes;
}

bool Same(const Jq::Result& a, const Jq::Result& b) {
  return a.values == b.values && a.error == b.error;
}

std::string Cut(std::string text) {
  if (text.size() <= LONGEST_VALUE) {
    return text;
  }
  size_t end = LONGEST_VALUE;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
    --end;
  }
  return text.substr(0, end) + "...";
}

/// The members of a list's element that the expression names.
Json::Value Named(const Json::Value& element, const Texts& names) {
  Json::Value part(Json::objectValue);
  for (const auto& name : element.getMemberNames()) {
    if (names.count(name) != 0) {
      part[name] = element[name];
    }
  }
  return part;
}

std::string ListText(const Json::Value& list, const Texts& names) {
  const std::string count = "has " + Plural(list.size(), "element");
  Json::Value parts(Json::arrayValue);
  for (const auto& element : list) {
    const Json::Value part = element.isObject() ? Named(element, names) : element;
    if (element.isObject() && part.empty()) {
      return count;
    }
    parts.append(part);
  }
  return parts.empty() ? count : count + ": " + FormatJson(parts);
}

std::string ValueText(const Jq::Result& result, const Texts& names) {
  if (!result.error.empty() || result.values.empty()) {
    return "fails: " + result.error;
  }
  const Json::Value& value = result.values.front();
  return value.isArray() ? ListText(value, names) : "is " + FormatJson(value);
}

/// The first name of a path: "daemon" of ".daemon.running".
std::string Head(const std::string& path) {
  return path.substr(1, path.find_first_of(".[", 1) - 1);
}

}  // namespace

Condition::Condition(std::string expression)
    : m_expression(std::move(expression)), m_program(m_expression) {}

bool Condition::Holds(const Json::Value& dump) {
  return m_program.Run(dump).Holds();
}

void Condition::CheckMembers(const Json::Value& dump) {
  const Jq::Result result = m_program.Run(dump);
  for (const auto& name : MemberNames(m_expression)) {
    if (dump.isMember(name)) {
      continue;
    }
    for (const auto& probe : Probes(m_expression)) {
      Json::Value with = dump;
      with[name] = probe;
      Json::Value other = dump;
      other[UNRELATED_MEMBER] = probe;
      // An expression over all members sees both.
      if (Same(m_program.Run(with), result) || !Same(m_program.Run(other), result)) {
        continue;
      }
      const std::string near = Nearest(name, dump.getMemberNames());
      throw Failure(Exit::Usage, "the dump has no member " + name +
                                     (near.empty() ? ": `tv dump` shows its members"
                                                   : " (did you mean " + near + "?)"));
    }
  }
}

std::string Condition::Missing(const Json::Value& dump) {
  const Texts names = MemberNames(m_expression);
  std::string values;
  for (const auto& path : MemberPaths(m_expression)) {
    if (path[0] != '.' || !dump.isMember(Head(path))) {
      continue;
    }
    values += (values.empty() ? "" : "; ") + ("`" + path + "` ") +
              Cut(ValueText(Jq(path).Run(dump), names));
  }
  const Jq::Result result = m_program.Run(dump);
  if (!result.error.empty()) {
    values += (values.empty() ? "" : "; ") + ("the expression fails: " + result.error);
  }
  return "`" + m_expression + "` does not hold" + (values.empty() ? "" : ": " + values);
}

}  // namespace desk::cli
