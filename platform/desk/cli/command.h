// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace desk::cli {

class Session;

/// A positional argument. The help shows it under its name, and Invocation finds it by its name.
struct Argument {
  enum class Count { One, Optional, Any };
  std::string name;
  std::string help;
  Count count = Count::One;
};

/// An option. `names` is in the form that the parser takes ("-f,--follow"); `value` is the name of
/// its value in the help, empty for a flag. Invocation finds it by its last name without dashes.
struct Option {
  std::string names;
  std::string value;
  std::string help;
  std::string Key() const;
};

/// The arguments and options of one command line, as texts. Numbers are checked when they are read.
class Invocation {
 public:
  void Set(const std::string& name, std::vector<std::string> values);
  bool Has(const std::string& name) const;
  /// The only value; empty when it was not given.
  std::string Text(const std::string& name) const;
  std::string TextOr(const std::string& name, const std::string& otherwise) const;
  std::vector<std::string> All(const std::string& name) const;
  /// Whole numbers within the bounds (in the forms of ReadNumber()), and seconds. Throws Failure
  /// (Usage) for anything else.
  int64_t Number(const std::string& name, int64_t otherwise, int64_t least = INT64_MIN,
                 int64_t most = INT64_MAX) const;
  uint64_t Unsigned(const std::string& name, uint64_t otherwise) const;
  double Seconds(const std::string& name, double otherwise) const;
  bool Json() const { return Has("json"); }

 private:
  std::map<std::string, std::vector<std::string>> m_values;
};

using Run = std::function<int(Session& session, const Invocation& words)>;

/// One row of the command table: all that the parser and the help need.
struct Command {
  std::string path;     ///< one or two verbs: "pkg install"
  std::string summary;  ///< half a line without a full stop
  std::vector<Argument> arguments;
  std::vector<Option> options;
  std::string details;  ///< lines below the summary; may be empty
  Run run;
};

/// A number of seconds from Seconds(), as a duration and as a text: "1.5 s".
std::chrono::milliseconds Milliseconds(double seconds);
std::string SecondsText(double seconds);

/// The option `--json`.
Option JsonOption();

}  // namespace desk::cli
