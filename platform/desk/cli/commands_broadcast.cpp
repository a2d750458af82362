// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv service, tv tune, tv signal, tv channel
#include <ostream>

#include "desk/checks/channel_files.h"
#include "desk/cli/bundle_args.h"
#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/cli/session.h"
#include "desk/cli/table.h"

namespace desk::cli {
namespace {

Json::Value ServiceId(const Invocation& words) {
  return Json::Value(static_cast<Json::UInt64>(words.Unsigned("ID", 0)));
}

int ServiceList(Session& session, const Invocation& words) {
  const Json::Value services = session.Call("service.list")["services"];
  if (words.Json()) {
    session.PrintJson(services);
    return 0;
  }
  Table table({"SERVICE", "PACKAGE"});
  table.AlignRight(0);
  for (const auto& service : services) {
    table.Add({service["id"].asString(), service["package"].asString()});
  }
  table.Print(session.Out());
  return 0;
}

int ServiceAdd(Session& session, const Invocation& words) {
  session.Call("service.add",
               Object({{"id", ServiceId(words)}, {"package", words.Text("package")}}));
  return 0;
}

int ServiceRemove(Session& session, const Invocation& words) {
  session.Call("service.remove", Object({{"id", ServiceId(words)}}));
  return 0;
}

int Tune(Session& session, const Invocation& words) {
  session.Call("tune", Object({{"id", ServiceId(words)}}));
  return 0;
}

int Signal(Session& session, const Invocation& words) {
  const std::string data = words.Text("data");
  BytesFromHex(data);
  const auto number = static_cast<Json::Int>(words.Number("N", 0, INT32_MIN, INT32_MAX));
  session.Call("signal", Object({{"signal", number}, {"data", data}}));
  return 0;
}

int ChannelList(Session& session, const Invocation& words) {
  Json::Value channels = session.Call("channel.list")["channels"];
  for (auto& channel : channels) {
    channel["channel_data_state"] =
        StateOfFeed(session.Paths(), channel["channel_data_url"].asString());
    channel["schedule_data_state"] =
        StateOfFeed(session.Paths(), channel["schedule_data_url"].asString());
  }
  if (words.Json()) {
    session.PrintJson(channels);
    return 0;
  }
  Table table({"SERVICE", "PACKAGE", "WIDGET", "CHANNELS", "", "SCHEDULE", ""});
  table.AlignRight(0);
  for (const auto& channel : channels) {
    table.Add({channel["service_id"].asString(), channel["pkg_id"].asString(),
               channel["widget_id"].asString(), channel["channel_data_url"].asString(),
               channel["channel_data_state"].asString(), channel["schedule_data_url"].asString(),
               channel["schedule_data_state"].asString()});
  }
  table.Print(session.Out());
  return 0;
}

}  // namespace

std::vector<Command> BroadcastCommands() {
  const Argument id{"ID", "service id, a 64-bit number"};
  return {
      {"service list", "list the services and their packages", {}, {JsonOption()}, "", ServiceList},
      {"service add",
       "add a service",
       {id},
       {{"--package", "P", "package id of the app that belongs to the service"}},
       "",
       ServiceAdd},
      {"service remove", "remove a service", {id}, {}, "", ServiceRemove},
      {"tune", "tune to a service", {id}, {}, "", Tune},
      {"signal",
       "send a TV-service signal",
       {{"N", "signal number"}},
       {{"--data", "HEX", "its data, two hex digits per byte"}},
       "",
       Signal},
      {"channel list",
       "list the records of the channel framework",
       {},
       {JsonOption()},
       "After each URL: whether its file exists and is valid JSON; \"web\" for a web URL, which "
       "is\n"
       "not fetched.",
       ChannelList}};
}

}  // namespace desk::cli
