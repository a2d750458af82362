// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "cli/condition.h"

#include <array>
#include <cctype>

#include "common/json.h"

namespace desk {
namespace {

constexpr size_t LONGEST_VALUE = 200;

bool IsWordCharacter(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '$' || c == '.';
}

/// Walks over a text and knows what is inside quotes or brackets.
class Walk {
 public:
  explicit Walk(const std::string& text) : m_text(text) {}

  bool AtEnd() const { return m_at >= m_text.size(); }
  size_t At() const { return m_at; }
  bool OnTop() const { return m_depth == 0 && !m_quoted; }
  bool Sees(const std::string& mark) const { return m_text.compare(m_at, mark.size(), mark) == 0; }

  bool SeesWord(const std::string& word) const {
    if (!Sees(word) || (m_at > 0 && IsWordCharacter(m_text[m_at - 1]))) {
      return false;
    }
    const size_t behind = m_at + word.size();
    return behind >= m_text.size() || !IsWordCharacter(m_text[behind]);
  }

  void Step() {
    const char c = m_text[m_at++];
    if (m_quoted) {
      if (c == '\\') {
        ++m_at;
      }
      m_quoted = c != '"';
      return;
    }
    m_quoted = c == '"';
    if (c == '(' || c == '[' || c == '{') {
      ++m_depth;
    } else if (c == ')' || c == ']' || c == '}') {
      --m_depth;
    }
  }

  void Skip(size_t count) { m_at += count; }

 private:
  const std::string& m_text;
  size_t m_at = 0;
  int m_depth = 0;
  bool m_quoted = false;
};

std::string Trimmed(const std::string& text) {
  const auto first = text.find_first_not_of(" \t\n");
  if (first == std::string::npos) {
    return "";
  }
  return text.substr(first, text.find_last_not_of(" \t\n") - first + 1);
}

/// Constructs that bind over a "|" or a comparison; an expression with one is not cut.
bool HasBinding(const std::string& expression) {
  for (Walk walk(expression); !walk.AtEnd(); walk.Step()) {
    if (!walk.OnTop()) {
      continue;
    }
    for (const char* word : {"as", "def", "if", "reduce", "foreach", "try", "label"}) {
      if (walk.SeesWord(word)) {
        return true;
      }
    }
  }
  return false;
}

size_t LastPipe(const std::string& expression) {
  size_t last = std::string::npos;
  for (Walk walk(expression); !walk.AtEnd(); walk.Step()) {
    if (!walk.OnTop() || !walk.Sees("|")) {
      continue;
    }
    if (walk.Sees("|=")) {
      return std::string::npos;
    }
    last = walk.At();
  }
  return last;
}

std::vector<std::string> CutAtWords(const std::string& text) {
  std::vector<std::string> parts;
  size_t start = 0;
  Walk walk(text);
  while (!walk.AtEnd()) {
    size_t length = 0;
    if (walk.OnTop()) {
      length = walk.SeesWord("and") ? 3 : walk.SeesWord("or") ? 2 : 0;
    }
    if (length == 0) {
      walk.Step();
      continue;
    }
    parts.push_back(Trimmed(text.substr(start, walk.At() - start)));
    walk.Skip(length);
    start = walk.At();
  }
  parts.push_back(Trimmed(text.substr(start)));
  return parts;
}

size_t FirstComparison(const std::string& part) {
  for (Walk walk(part); !walk.AtEnd(); walk.Step()) {
    if (!walk.OnTop()) {
      continue;
    }
    for (const char* mark : {"==", "!=", "<", ">"}) {
      if (walk.Sees(mark)) {
        return walk.At();
      }
    }
  }
  return std::string::npos;
}

/// Both with a "|" between, or the one that is not empty.
std::string Behind(const std::string& pipe, const std::string& expression) {
  if (pipe.empty() || expression.empty()) {
    return pipe + expression;
  }
  return pipe + " | " + expression;
}

/// What the condition compares, of one or of several: ".a" or "[.a,.b]"; empty when it is no
/// comparison throughout.
std::string LeftSides(const std::string& condition) {
  std::string list;
  const auto parts = CutAtWords(condition);
  for (const auto& part : parts) {
    const size_t comparison = FirstComparison(part);
    if (comparison == std::string::npos) {
      return "";
    }
    list += list.empty() ? "" : ",";
    list += Trimmed(part.substr(0, comparison));
  }
  return parts.size() == 1 ? list : "[" + list + "]";
}

/// What a call of any or all that is the whole part looks at: "any(.a[]; .b == 1)" at "[.a[] |
/// .b]".
std::string LookedThrough(const std::string& part) {
  for (const std::string name : {"any(", "all("}) {
    if (part.compare(0, name.size(), name) != 0 || part.back() != ')') {
      continue;
    }
    const std::string inside = part.substr(name.size(), part.size() - name.size() - 1);
    for (Walk walk(inside); !walk.AtEnd(); walk.Step()) {
      if (!walk.OnTop() || !walk.Sees(";")) {
        continue;
      }
      const std::string from = Trimmed(inside.substr(0, walk.At()));
      const std::string compared = LeftSides(Trimmed(inside.substr(walk.At() + 1)));
      return "[" + Behind(from, compared) + "]";
    }
  }
  return "";
}

std::string Shown(const Json::Value& value) {
  std::string text = FormatJson(value);
  if (text.size() > LONGEST_VALUE) {
    size_t end = LONGEST_VALUE;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) {
      --end;
    }
    text.resize(end);
    text += "...";
  }
  return text;
}

std::string Shown(const Jq::Result& result) {
  std::string text;
  for (const auto& value : result.values) {
    text += text.empty() ? "" : ", ";
    text += Shown(value);
  }
  if (!result.error.empty()) {
    return text.empty() ? "an error: " + result.error : text + ", then an error: " + result.error;
  }
  return text.empty() ? "nothing" : text;
}

std::string Values(const std::string& program, const Json::Value& dump) {
  return "`" + program + "` is " + Shown(Jq(program).Run(dump));
}

/// Both conditions of the text are about programs that were cut out of another: they may be none.
std::string MissingPart(const std::string& pipe, const std::string& part, const Json::Value& dump) {
  const std::string whole = Behind(pipe, "(" + part + ")");
  if (!Jq::Compiles(whole) || Jq(whole).Run(dump).Holds()) {
    return "";
  }
  const std::string left = LeftSide(part);
  if (!left.empty() && Jq::Compiles(Behind(pipe, left))) {
    return Values(Behind(pipe, left), dump);
  }
  return Values(Behind(pipe, part), dump);
}

}  // namespace

ExpressionParts CutExpression(const std::string& expression) {
  if (HasBinding(expression)) {
    return {"", {Trimmed(expression)}};
  }
  const size_t pipe = LastPipe(expression);
  if (pipe == std::string::npos) {
    return {"", CutAtWords(expression)};
  }
  return {Trimmed(expression.substr(0, pipe)), CutAtWords(expression.substr(pipe + 1))};
}

std::string LeftSide(const std::string& part) {
  const size_t comparison = FirstComparison(part);
  if (comparison != std::string::npos) {
    return Trimmed(part.substr(0, comparison));
  }
  return LookedThrough(part);
}

Condition::Condition(std::string expression)
    : m_expression(std::move(expression)), m_program(m_expression) {}

bool Condition::Holds(const Json::Value& dump) {
  return m_program.Run(dump).Holds();
}

std::string Condition::Missing(const Json::Value& dump) const {
  const ExpressionParts cut = CutExpression(m_expression);
  std::string missing;
  for (const auto& part : cut.parts) {
    const std::string text = MissingPart(cut.pipe, part, dump);
    if (!text.empty()) {
      missing += missing.empty() ? "" : "; ";
      missing += text;
    }
  }
  if (missing.empty()) {
    missing = Values(m_expression, dump);
  }
  return "`" + m_expression + "` does not hold: " + missing;
}

}  // namespace desk
