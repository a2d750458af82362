// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv port
#include <message_port.h>

#include <ostream>

#include "desk/cli/bundle_args.h"
#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/cli/session.h"
#include "desk/cli/table.h"

namespace desk::cli {
namespace {

using Clock = std::chrono::steady_clock;

std::string NameOf(int code) {
  switch (code) {
    case MESSAGE_PORT_ERROR_PORT_NOT_FOUND:
      return "no such port";
    case MESSAGE_PORT_ERROR_INVALID_PARAMETER:
      return "invalid parameter";
    case MESSAGE_PORT_ERROR_IO_ERROR:
      return "input or output error";
    default:
      return "code " + std::to_string(code);
  }
}

void PrintBundle(Session& session, const Invocation& words, const Json::Value& event) {
  if (words.Json()) {
    session.PrintJson(event);
    return;
  }
  for (const auto& entry : event["bundle"]) {
    session.Out() << OneLine(BundleEntryText(entry)) << '\n';
  }
}

/// Registers the reply port and keeps the first message that arrives there.
class ReplyPort {
 public:
  ReplyPort(Session& session, const Invocation& words)
      : m_session(session),
        m_port(words.Text("reply-port")),
        m_timeout(words.Seconds("timeout", 5)) {
    session.Tv().Subscribe("port", [this](const Json::Value& event) {
      if (m_reply.isNull() && event["port"].asString() == m_port) {
        m_reply = event;
      }
    });
    Json::Value request = Object({{"port", m_port}});
    if (words.Has("from")) {
      request["from"] = words.Text("from");
    }
    session.Call("port.register", request);
  }

  const Json::Value& Receive() {
    const auto end = Clock::now() + Milliseconds(m_timeout);
    while (m_reply.isNull()) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
      if (left.count() <= 0) {
        throw Failure(Exit::TimedOut, "the message was delivered, but no reply came to port " +
                                          m_port + ": see `tv log`");
      }
      m_session.Tv().Wait(left);
    }
    return m_reply;
  }

 private:
  Session& m_session;
  const std::string m_port;
  const double m_timeout;
  Json::Value m_reply;
};

void SendMessage(Session& session, const Invocation& words) {
  const std::string app = words.TextOr("to", DeskPaths::DAEMON_ID);
  const std::string port = words.Text("PORT");
  Json::Value request =
      Object({{"app", app}, {"port", port}, {"bundle", ParseBundle(words.All("PAIR"))}});
  if (words.Has("from")) {
    request["from"] = words.Text("from");
  }
  if (words.Has("reply-port")) {
    request["reply_port"] = words.Text("reply-port");
  }
  const int result = session.Call("port.send", request)["result"].asInt();
  if (result == 0) {
    return;
  }
  const bool missing = result == MESSAGE_PORT_ERROR_PORT_NOT_FOUND;
  throw Failure(missing ? Exit::NotFound : Exit::Failed,
                "cannot send to port \"" + port + "\" of " + app + " (" + NameOf(result) +
                    "): `tv port list` shows the open ports");
}

int Send(Session& session, const Invocation& words) {
  ParseBundle(words.All("PAIR"));
  if (!words.Has("reply-port")) {
    SendMessage(session, words);
    return 0;
  }
  ReplyPort reply(session, words);
  SendMessage(session, words);
  PrintBundle(session, words, reply.Receive());
  return 0;
}

int List(Session& session, const Invocation& words) {
  const Json::Value ports = session.Call("port.list")["ports"];
  if (words.Json()) {
    session.PrintJson(ports);
    return 0;
  }
  Table table({"APP", "PORT", "ID"});
  table.AlignRight(2);
  for (const auto& port : ports) {
    table.Add({port["app"].asString(), port["port"].asString(), port["id"].asString()});
  }
  table.Print(session.Out());
  return 0;
}

}  // namespace

std::vector<Command> PortCommands() {
  return {{"port send",
           "send a message as an app would",
           {{"PORT", "port name"},
            {"PAIR", "key=text, key:int=5, key:bytes=0a0b, key:array=a,b", Argument::Count::Any}},
           {{"--to", "APP", "owner of the port; default: the daemon"},
            {"--from", "APP", "sender of the message; not needed in an app's own process"},
            {"--reply-port", "P", "wait for a reply on this port and print it"},
            {"--timeout", "S", "seconds to wait for the reply; default 5"},
            JsonOption()},
           "",
           Send},
          {"port list", "list the open ports", {}, {JsonOption()}, "", List}};
}

}  // namespace desk::cli
