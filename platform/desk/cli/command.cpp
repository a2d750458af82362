// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/command.h"

#include <cstdlib>

#include "desk/cli/failure.h"
#include "desk/common/numbers.h"

namespace desk::cli {
namespace {

constexpr double MOST_SECONDS = 1e9;  // keeps deadlines within the range of the clocks

[[noreturn]] void BadNumber(const std::string& name, const std::string& text,
                            const std::string& wanted) {
  throw Failure(Exit::Usage, name + " is \"" + text + "\": give " + wanted);
}

}  // namespace

std::string Option::Key() const {
  const auto start = names.find_last_of(',') == std::string::npos ? 0 : names.find_last_of(',') + 1;
  return names.substr(names.find_first_not_of('-', start));
}

void Invocation::Set(const std::string& name, std::vector<std::string> values) {
  m_values[name] = std::move(values);
}

bool Invocation::Has(const std::string& name) const {
  return m_values.count(name) != 0;
}

std::string Invocation::Text(const std::string& name) const {
  return TextOr(name, "");
}

std::string Invocation::TextOr(const std::string& name, const std::string& otherwise) const {
  const auto found = m_values.find(name);
  return found == m_values.end() || found->second.empty() ? otherwise : found->second.front();
}

std::vector<std::string> Invocation::All(const std::string& name) const {
  const auto found = m_values.find(name);
  return found == m_values.end() ? std::vector<std::string>() : found->second;
}

int64_t Invocation::Number(const std::string& name, int64_t otherwise, int64_t least,
                           int64_t most) const {
  if (!Has(name)) {
    return otherwise;
  }
  const std::string text = Text(name);
  const auto number = ReadNumber(text);
  if (!number) {
    BadNumber(name, text, "a whole number");
  }
  if (*number < least || *number > most) {
    BadNumber(name, text,
              most == INT64_MAX ? "at least " + std::to_string(least)
                                : std::to_string(least) + " to " + std::to_string(most));
  }
  return *number;
}

uint64_t Invocation::Unsigned(const std::string& name, uint64_t otherwise) const {
  if (!Has(name)) {
    return otherwise;
  }
  const std::string text = Text(name);
  const auto number = ReadUnsigned(text);
  if (!number) {
    BadNumber(name, text, "a whole number from 0 to 18446744073709551615");
  }
  return *number;
}

double Invocation::Seconds(const std::string& name, double otherwise) const {
  if (!Has(name)) {
    return otherwise;
  }
  const std::string text = Text(name);
  char* end = nullptr;
  const double number = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !(number >= 0 && number <= MOST_SECONDS)) {
    BadNumber(name, text, "a number of seconds, 0 or more");
  }
  return number;
}

std::chrono::milliseconds Milliseconds(double seconds) {
  return std::chrono::milliseconds(static_cast<int64_t>(seconds * 1000));
}

std::string SecondsText(double seconds) {
  std::string text = std::to_string(seconds);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text + " s";
}

Option JsonOption() {
  return {"--json", "", "print JSON, for machines"};
}

}  // namespace desk::cli
