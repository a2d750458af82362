// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "desk/cli/command.h"

namespace desk::cli {

/// A first word that is followed by another verb, such as "pkg".
struct Group {
  std::string name;
  std::string summary;
};

/// All commands of `tv`, in the order of the overview.
struct CommandTable {
  std::vector<Group> groups;
  std::vector<Command> commands;

  const Command* Find(const std::string& path) const;
  bool IsGroup(const std::string& name) const;
  /// The commands of a group, or the command with that name.
  std::vector<const Command*> Below(const std::string& name) const;
  /// The possible first words, or with a group the words that may follow its name.
  std::vector<std::string> Words(const std::string& group) const;
};

/// A parsed command line: a command to run, or a text to print.
struct Request {
  const Command* command = nullptr;  ///< null: print `text` and exit with Exit::Done
  Invocation words;
  std::string root;  ///< value of --root; empty when it was not given
  std::string text;
};

/// Parses the words after the program's name. Throws Failure (Usage); for an unknown verb its text
/// names the nearest one.
Request ReadCommandLine(const CommandTable& table, const std::vector<std::string>& words);

std::string Overview(const CommandTable& table);
/// Help for a command or a group. Throws Failure (Usage) for anything else.
std::string Help(const CommandTable& table, const std::string& path);
std::string UsageLine(const Command& command);

}  // namespace desk::cli
