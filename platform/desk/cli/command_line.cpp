// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/command_line.h"

#include <CLI/CLI.hpp>

#include "desk/cli/failure.h"
#include "desk/common/nearest.h"

namespace desk::cli {
namespace {

constexpr const char* VERSION_TEXT = "tv (orv-enabler) " ORV_VERSION;

bool IsHelp(const std::string& word) {
  return word == "-h" || word == "--help";
}

/// The options before the verb. The command's own parser reads what follows the verb.
struct Head {
  std::string root;
  bool help = false;
  bool version = false;
  size_t next = 0;
};

Head ReadHead(const std::vector<std::string>& words) {
  Head head;
  for (; head.next < words.size(); ++head.next) {
    const std::string& word = words[head.next];
    if (word.compare(0, 7, "--root=") == 0) {
      head.root = word.substr(7);
    } else if (word == "--root") {
      if (++head.next == words.size()) {
        throw Failure(Exit::Usage, "--root needs a directory");
      }
      head.root = words[head.next];
    } else if (IsHelp(word)) {
      head.help = true;
    } else if (word == "--version") {
      head.version = true;
    } else {
      break;
    }
  }
  return head;
}

[[noreturn]] void UnknownVerb(const CommandTable& table, const std::string& group,
                              const std::string& word) {
  const std::string front = group.empty() ? "tv " : "tv " + group + " ";
  const std::string near = Nearest(word, table.Words(group));
  if (word.compare(0, 1, "-") == 0) {
    throw Failure(Exit::Usage, "\"" + word + "\" is not an option of tv: see `tv help`");
  }
  const std::string known = group.empty() ? "see `tv help`" : "see `tv help " + group + "`";
  throw Failure(Exit::Usage, "\"" + front + word + "\" is not a command: " +
                                 (near.empty() ? known : "did you mean `" + front + near + "`?"));
}

[[noreturn]] void VerbMissing(const CommandTable& table, const std::string& group) {
  std::string list;
  for (const auto& word : table.Words(group)) {
    list += (list.empty() ? "" : ", ") + word;
  }
  throw Failure(Exit::Usage, "tv " + group + " needs one of: " + list);
}

/// Returns the command at words[next] and moves next past its verbs. Returns null when the help of
/// a group is wanted.
const Command* TakeVerbs(const CommandTable& table, const std::vector<std::string>& words,
                         size_t& next, std::string& group) {
  const std::string& first = words[next++];
  if (!table.IsGroup(first)) {
    const Command* command = table.Find(first);
    if (command == nullptr) {
      UnknownVerb(table, "", first);
    }
    return command;
  }
  group = first;
  if (next == words.size()) {
    VerbMissing(table, first);
  }
  if (IsHelp(words[next])) {
    return nullptr;
  }
  const Command* command = table.Find(first + " " + words[next]);
  if (command == nullptr) {
    UnknownVerb(table, first, words[next]);
  }
  ++next;
  return command;
}

/// Owns the values that CLI11 fills in.
class Parser {
 public:
  explicit Parser(const Command& command) : m_command(command), m_app("", "tv " + command.path) {
    m_app.set_help_flag("-h,--help", "");
    m_app.add_option("--root", m_root)->type_size(1);
    m_values.resize(command.arguments.size() + command.options.size());
    size_t slot = 0;
    for (const auto& argument : command.arguments) {
      AddArgument(argument, m_values[slot++]);
    }
    for (const auto& option : command.options) {
      AddOption(option, m_values[slot++]);
    }
  }

  /// Returns false when the help is wanted.
  bool Parse(std::vector<std::string> words) {
    std::reverse(words.begin(), words.end());
    try {
      m_app.parse(std::move(words));
    } catch (const CLI::CallForHelp&) {
      return false;
    } catch (const CLI::ParseError& e) {
      throw Failure(Exit::Usage, Reason(e) + ": usage is `" + UsageLine(m_command) + "`");
    }
    return true;
  }

  Invocation Words() const {
    Invocation words;
    size_t slot = 0;
    for (const auto& argument : m_command.arguments) {
      Put(words, argument.name, slot++);
    }
    for (const auto& option : m_command.options) {
      Put(words, option.Key(), slot++);
    }
    return words;
  }

  const std::string& Root() const { return m_root; }

 private:
  struct Value {
    std::string text;
    std::vector<std::string> texts;  ///< of an argument that may be repeated
    CLI::Option* option = nullptr;
    bool many = false;
    bool flag = false;
  };

  void AddArgument(const Argument& argument, Value& value) {
    value.many = argument.count == Argument::Count::Any;
    value.option = value.many ? m_app.add_option(argument.name, value.texts)
                              : m_app.add_option(argument.name, value.text);
    if (argument.count == Argument::Count::One) {
      value.option->required();
    }
  }

  void AddOption(const Option& option, Value& value) {
    value.flag = option.value.empty();
    value.option =
        value.flag ? m_app.add_flag(option.names) : m_app.add_option(option.names, value.text);
  }

  void Put(Invocation& words, const std::string& name, size_t slot) const {
    const Value& value = m_values[slot];
    if (value.option->count() == 0) {
      return;
    }
    if (value.many) {
      words.Set(name, value.texts);
    } else {
      words.Set(name, value.flag ? std::vector<std::string>() : std::vector{value.text});
    }
  }

  std::string Reason(const CLI::ParseError& e) const {
    if (dynamic_cast<const CLI::ExtrasError*>(&e) != nullptr) {
      const auto extras = m_app.remaining(true);
      const std::string word = extras.empty() ? std::string() : extras.front();
      if (word.compare(0, 1, "-") == 0) {
        return "\"" + word +
               "\" is not an option of this command (write -- before a value that begins with a "
               "dash)";
      }
      return "\"" + word + "\" is one argument too many";
    }
    for (const auto* option : m_app.get_options()) {
      if (option->count() > 1 && option->nonpositional() && option->get_items_expected_max() == 1) {
        return option->get_name() + " is given twice";
      }
    }
    std::string text = e.what();
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
  }

  const Command& m_command;
  CLI::App m_app;
  std::string m_root;
  std::vector<Value> m_values;
};

std::string Joined(const std::vector<std::string>& words, size_t from) {
  std::string text;
  for (size_t i = from; i < words.size(); ++i) {
    text += (i == from ? "" : " ") + words[i];
  }
  return text;
}

Request Text(std::string text) {
  Request request;
  request.text = std::move(text);
  return request;
}

}  // namespace

Request ReadCommandLine(const CommandTable& table, const std::vector<std::string>& words) {
  const Head head = ReadHead(words);
  if (head.version) {
    return Text(std::string(VERSION_TEXT) + "\n");
  }
  if (head.next == words.size()) {
    return Text(Overview(table));
  }
  size_t next = head.next;
  if (words[next] == "help") {
    return Text(next + 1 == words.size() ? Overview(table) : Help(table, Joined(words, next + 1)));
  }
  std::string group;
  const Command* command = TakeVerbs(table, words, next, group);
  if (command == nullptr) {
    return Text(Help(table, group));
  }
  Parser parser(*command);
  using Difference = std::vector<std::string>::difference_type;
  if (head.help || !parser.Parse({words.begin() + static_cast<Difference>(next), words.end()})) {
    return Text(Help(table, command->path));
  }
  Request request;
  request.command = command;
  request.words = parser.Words();
  request.root = parser.Root().empty() ? head.root : parser.Root();
  return request;
}

}  // namespace desk::cli
