// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace desk {

class Session;

/// A word that stands at its place. The name is how the help shows it and how it is asked for.
struct Argument {
  enum class Count { One, Optional, Any };
  std::string name;
  std::string help;
  Count count = Count::One;
};

/// A word with dashes. names as the parser takes them ("-f,--follow"); value is the name of its
/// value in the help, empty for a switch. Asked for by its last name, without the dashes.
struct Option {
  std::string names;
  std::string value;
  std::string help;
  std::string Key() const;
};

/// What the words after a verb gave, as texts; the numbers are checked when they are asked for.
class Invocation {
 public:
  void Set(const std::string& name, std::vector<std::string> values);
  bool Has(const std::string& name) const;
  /// The only value, or an empty text.
  std::string Text(const std::string& name) const;
  std::string TextOr(const std::string& name, const std::string& otherwise) const;
  std::vector<std::string> All(const std::string& name) const;
  /// Whole numbers within the bounds, as ReadNumber has them, and times; a Failure with Exit::Usage
  /// for anything else.
  int64_t Number(const std::string& name, int64_t otherwise, int64_t least = INT64_MIN,
                 int64_t most = INT64_MAX) const;
  uint64_t Unsigned(const std::string& name, uint64_t otherwise) const;
  double Seconds(const std::string& name, double otherwise) const;
  bool Json() const { return Has("json"); }

 private:
  std::map<std::string, std::vector<std::string>> m_values;
};

using Run = std::function<int(Session& session, const Invocation& words)>;

/// One row of the command table: everything that parsing, help and completion need.
struct Command {
  std::string path;     ///< the verb, or two: "pkg install"
  std::string summary;  ///< half a line, no full stop
  std::vector<Argument> arguments;
  std::vector<Option> options;
  std::string details;  ///< whole lines below the summary; may be empty
  Run run;
};

/// What Seconds() gave, to wait by and for people to read: "1.5 s".
std::chrono::milliseconds Milliseconds(double seconds);
std::string SecondsText(double seconds);

/// `--json`, the same everywhere.
Option JsonOption();

}  // namespace desk
