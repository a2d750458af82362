// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The texts of `tv help`, generated from the command table.
#include <algorithm>

#include "desk/cli/command_line.h"
#include "desk/cli/failure.h"
#include "desk/cli/table.h"
#include "desk/common/nearest.h"

namespace desk::cli {
namespace {

constexpr const char* HEAD =
    "tv - a television on a desk\n"
    "\n"
    "Usage: tv [--root DIR] COMMAND [ARGUMENT...]\n";

constexpr const char* TAIL =
    "\n"
    "Options:\n"
    "  --root DIR  directory of the desk; default $TV_ROOT, else $XDG_STATE_HOME/tv-desk\n"
    "  --version   print the version\n"
    "  -h, --help  print help; see also `tv help COMMAND`\n"
    "\n"
    "Exit code: 0 done, 1 failed, 2 usage, 3 no TV is running, 4 not found, 5 timed out\n";

using Line = std::pair<std::string, std::string>;

std::string Lines(const std::vector<Line>& lines) {
  size_t width = 0;
  for (const auto& line : lines) {
    width = std::max(width, DisplayWidth(line.first));
  }
  std::string text;
  for (const auto& line : lines) {
    text += "  " + line.first + std::string(width - DisplayWidth(line.first), ' ') + "  " +
            line.second + "\n";
  }
  return text;
}

std::string Shown(const Argument& argument) {
  switch (argument.count) {
    case Argument::Count::One:
      return argument.name;
    case Argument::Count::Optional:
      return "[" + argument.name + "]";
    case Argument::Count::Any:
      return "[" + argument.name + "...]";
  }
  return argument.name;
}

std::string ShownNames(const Option& option) {
  std::string text;
  for (const char c : option.names) {
    text += c == ',' ? std::string(", ") : std::string(1, c);
  }
  return option.value.empty() ? text : text + " " + option.value;
}

std::string ShortUsage(const Option& option) {
  const auto comma = option.names.find(',');
  const std::string name = option.names.substr(0, comma);
  return "[" + name + (option.value.empty() ? "" : " " + option.value) + "]";
}

std::string GroupHelp(const CommandTable& table, const Group& group) {
  std::vector<Line> lines;
  for (const Command* command : table.Below(group.name)) {
    lines.emplace_back(UsageLine(*command), command->summary);
  }
  return "tv " + group.name + " - " + group.summary + "\n\nCommands:\n" + Lines(lines) +
         "\n`tv help " + group.name + " VERB` describes one of them.\n";
}

std::string CommandHelp(const Command& command) {
  std::string text =
      "tv " + command.path + " - " + command.summary + "\n\nUsage: " + UsageLine(command) + "\n";
  if (!command.details.empty()) {
    text += "\n" + command.details + "\n";
  }
  std::vector<Line> lines;
  for (const auto& argument : command.arguments) {
    lines.emplace_back(argument.name, argument.help);
  }
  if (!lines.empty()) {
    text += "\nArguments:\n" + Lines(lines);
  }
  lines.clear();
  for (const auto& option : command.options) {
    lines.emplace_back(ShownNames(option), option.help);
  }
  lines.emplace_back("--root DIR", "directory of the desk");
  lines.emplace_back("-h, --help", "print this help");
  return text + "\nOptions:\n" + Lines(lines);
}

}  // namespace

const Command* CommandTable::Find(const std::string& path) const {
  const auto found = std::find_if(commands.begin(), commands.end(),
                                  [&](const Command& command) { return command.path == path; });
  return found == commands.end() ? nullptr : &*found;
}

bool CommandTable::IsGroup(const std::string& name) const {
  return std::any_of(groups.begin(), groups.end(),
                     [&](const Group& group) { return group.name == name; });
}

std::vector<const Command*> CommandTable::Below(const std::string& name) const {
  std::vector<const Command*> found;
  for (const auto& command : commands) {
    if (command.path == name || command.path.compare(0, name.size() + 1, name + " ") == 0) {
      found.push_back(&command);
    }
  }
  return found;
}

std::vector<std::string> CommandTable::Words(const std::string& group) const {
  std::vector<std::string> words;
  for (const auto& command : commands) {
    const auto blank = command.path.find(' ');
    std::string word = command.path.substr(0, blank);
    if (!group.empty()) {
      if (word != group || blank == std::string::npos) {
        continue;
      }
      word = command.path.substr(blank + 1);
    }
    if (words.empty() || words.back() != word) {
      words.push_back(word);
    }
  }
  if (group.empty()) {
    words.push_back("help");
  }
  return words;
}

std::string UsageLine(const Command& command) {
  std::string text = "tv " + command.path;
  for (const auto& option : command.options) {
    text += " " + ShortUsage(option);
  }
  for (const auto& argument : command.arguments) {
    text += " " + Shown(argument);
  }
  return text;
}

std::string Overview(const CommandTable& table) {
  std::vector<Line> lines;
  for (const auto& word : table.Words("")) {
    if (const Command* command = table.Find(word)) {
      lines.emplace_back(word, command->summary);
    }
    for (const auto& group : table.groups) {
      if (group.name == word) {
        lines.emplace_back(word, group.summary);
      }
    }
  }
  return std::string(HEAD) + "\nCommands:\n" + Lines(lines) + TAIL;
}

std::string Help(const CommandTable& table, const std::string& path) {
  for (const auto& group : table.groups) {
    if (group.name == path) {
      return GroupHelp(table, group);
    }
  }
  if (const Command* command = table.Find(path)) {
    return CommandHelp(*command);
  }
  const auto blank = path.find(' ');
  const std::string first = path.substr(0, blank);
  const bool below = blank != std::string::npos && table.IsGroup(first);
  const std::string near =
      below ? Nearest(path.substr(blank + 1), table.Words(first)) : Nearest(first, table.Words(""));
  throw Failure(Exit::Usage, "there is no help for \"" + path + "\": " +
                                 (near.empty() ? std::string("see `tv help`")
                                               : "did you mean `tv help " +
                                                     (below ? first + " " : "") + near + "`?"));
}

}  // namespace desk::cli
