// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv key
#include <cstdlib>
#include <ostream>
#include <regex>

#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/cli/session.h"
#include "desk/cli/table.h"

namespace desk::cli {
namespace {

/// The form of vconftool.
void PrintKey(std::ostream& out, const Json::Value& key) {
  out << key["key"].asString() << ", ";
  if (key["type"].asString() == "none") {
    out << "removed\n";
    return;
  }
  out << "value = " << OneLine(key["value"].asString()) << " (" << key["type"].asString() << ")\n";
}

void Print(Session& session, const Invocation& words, const Json::Value& key) {
  if (words.Has("raw")) {
    session.Out() << key["value"].asString() << '\n';
  } else if (words.Json()) {
    session.PrintJson(key);
  } else {
    PrintKey(session.Out(), key);
  }
}

Failure NoKey(const std::string& key) {
  return Failure(Exit::NotFound, "there is no key \"" + key + "\": `tv key list` shows all");
}

int Get(Session& session, const Invocation& words) {
  Json::Value key = session.Call("key.get", Object({{"key", words.Text("KEY")}}));
  if (!key["found"].asBool()) {
    throw NoKey(words.Text("KEY"));
  }
  key.removeMember("found");
  key["key"] = words.Text("KEY");
  Print(session, words, key);
  return 0;
}

bool LooksLikeInt(const std::string& text) {
  static const std::regex form("[-+]?[0-9]{1,10}");
  return std::regex_match(text, form);
}

Json::Value IntValue(const std::string& text) {
  char* end = nullptr;
  const long long number = std::strtoll(text.c_str(), &end, 10);
  if (!LooksLikeInt(text) || number < INT32_MIN || number > INT32_MAX) {
    throw Failure(Exit::Usage,
                  "\"" + text + "\" is not a 32-bit number: give one, or use -t string");
  }
  return Json::Value(static_cast<Json::Int>(number));
}

/// A key keeps its type; a new key gets the type that its value looks like.
std::string TypeFor(Session& session, const Invocation& words) {
  std::string given = words.Text("type");
  if (given == "int" || given == "string") {
    return given;
  }
  if (!given.empty()) {
    throw Failure(Exit::Usage, "\"" + given + "\" is not a type of key: give int or string");
  }
  const Json::Value present = session.Call("key.get", Object({{"key", words.Text("KEY")}}));
  if (present["found"].asBool()) {
    return present["type"].asString();
  }
  return LooksLikeInt(words.Text("VALUE")) ? "int" : "string";
}

int Set(Session& session, const Invocation& words) {
  const std::string type = TypeFor(session, words);
  const std::string text = words.Text("VALUE");
  const Json::Value value = type == "int" ? IntValue(text) : Json::Value(text);
  session.Call("key.set", Object({{"key", words.Text("KEY")}, {"type", type}, {"value", value}}));
  return 0;
}

int Unset(Session& session, const Invocation& words) {
  const Json::Value reply = session.Call("key.unset", Object({{"key", words.Text("KEY")}}));
  if (!reply["found"].asBool()) {
    throw NoKey(words.Text("KEY"));
  }
  return 0;
}

int List(Session& session, const Invocation& words) {
  const Json::Value keys =
      session.Call("key.list", Object({{"prefix", words.Text("PREFIX")}}))["keys"];
  if (words.Json()) {
    session.PrintJson(keys);
    return 0;
  }
  for (const auto& key : keys) {
    PrintKey(session.Out(), key);
  }
  return 0;
}

int Watch(Session& session, const Invocation& words) {
  const std::string prefix = words.Text("PREFIX");
  session.Tv().Subscribe("key", [&](const Json::Value& event) {
    if (event["key"].asString().compare(0, prefix.size(), prefix) != 0) {
      return;
    }
    if (words.Json()) {
      session.PrintJsonLine(event);
    } else {
      PrintKey(session.Out(), event);
    }
    session.Out().flush();
  });
  while (session.Out().good()) {
    session.Tv().Wait(std::chrono::seconds(1));
  }
  return 0;
}

}  // namespace

std::vector<Command> KeyCommands() {
  const Argument key{"KEY", "key name, such as db/boot/last_service"};
  const Option raw{"-r,--raw", "", "print only the value"};
  const Option type{"-t,--type", "TYPE",
                    "int or string; default: the key's type, else what the value "
                    "looks like"};
  return {{"key get", "print the value of a key", {key}, {raw, JsonOption()}, "", Get},
          {"key set", "set a key", {key, {"VALUE", "a number or a string"}}, {type}, "", Set},
          {"key unset", "remove a key", {key}, {}, "", Unset},
          {"key list",
           "list keys and their values",
           {{"PREFIX", "only keys that begin with this", Argument::Count::Optional}},
           {JsonOption()},
           "",
           List},
          {"key watch",
           "print each change of a key as it happens",
           {{"PREFIX", "only keys that begin with this", Argument::Count::Optional}},
           {JsonOption()},
           "Runs until the TV is switched off or you press Ctrl-C.",
           Watch}};
}

}  // namespace desk::cli
