// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "cli/command.h"

namespace desk {

/// A first word that has further verbs behind it.
struct Group {
  std::string name;
  std::string summary;
};

/// All that `tv` understands, in the order in which the overview shows it.
struct CommandTable {
  std::vector<Group> groups;
  std::vector<Command> commands;

  const Command* Find(const std::string& path) const;
  bool IsGroup(const std::string& name) const;
  /// Commands below a group, or the one with that name.
  std::vector<const Command*> Below(const std::string& name) const;
  /// What may stand as the first word, or behind the group's name.
  std::vector<std::string> Words(const std::string& group) const;
};

/// What a command line asks for: a command to run, or a text to print.
struct Request {
  const Command* command = nullptr;  ///< null: print text and end with Exit::Done
  Invocation words;
  std::string root;  ///< of --root; empty when it was not given
  std::string text;
};

/// Reads the words after the program's name. Throws Failure with Exit::Usage, whose text names the
/// nearest verb when one was not understood.
Request ReadCommandLine(const CommandTable& table, const std::vector<std::string>& words);

std::string Overview(const CommandTable& table);
/// Help for a command or a group. Throws Failure with Exit::Usage for anything else.
std::string Help(const CommandTable& table, const std::string& path);
std::string UsageLine(const Command& command);

}  // namespace desk
