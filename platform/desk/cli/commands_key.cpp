// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv key
#include <cstdlib>
#include <ostream>
#include <regex>

#include "cli/commands.h"
#include "cli/failure.h"
#include "cli/session.h"
#include "cli/table.h"

namespace desk {
namespace {

/// The form that vconftool users read.
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
    throw Failure(Exit::Usage, "\"" + text + "\" is no number of 32 bits: give one, or -t string");
  }
  return Json::Value(static_cast<Json::Int>(number));
}

/// A key keeps the type that it has; a new one gets the type that its value looks like.
std::string TypeFor(Session& session, const Invocation& words) {
  std::string given = words.Text("type");
  if (given == "int" || given == "string") {
    return given;
  }
  if (!given.empty()) {
    throw Failure(Exit::Usage, "\"" + given + "\" is no type of a key: give int or string");
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
  const Argument key{"KEY", "name of the key, such as db/boot/last_service"};
  const Option raw{"-r,--raw", "", "print the value alone"};
  const Option type{"-t,--type", "TYPE",
                    "int or string; else the key's own type, or what the "
                    "value looks like"};
  return {
      {"key get", "the value of a key", {key}, {raw, JsonOption()}, "", Get},
      {"key set", "give a key a value", {key, {"VALUE", "a number or a text"}}, {type}, "", Set},
      {"key unset", "remove a key", {key}, {}, "", Unset},
      {"key list",
       "keys and their values",
       {{"PREFIX", "only keys that begin so", Argument::Count::Optional}},
       {JsonOption()},
       "",
       List},
      {"key watch",
       "print every set of a key as it happens",
       {{"PREFIX", "only keys that begin so", Argument::Count::Optional}},
       {JsonOption()},
       "Ends with the TV or with Ctrl-C.",
       Watch}};
}

}  // namespace desk
