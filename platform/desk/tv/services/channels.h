// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "desk/tv/router.h"
#include "desk/tv/tv_store.h"

namespace desk::tv {

/// A virtual channel.
struct Channel {
  std::string package;
  std::uint64_t serviceId = 0;
  /// The record as the daemon passed it. The TV knows its member "pkg_id" only.
  Json::Value record;
};

/// The channel framework: channel.*. Shows each record that it was given as a virtual channel.
/// Survives power-off. Main loop only.
///
/// A record is a JSON object with a "pkg_id". Creating a record that exists replaces it; updating
/// or removing one that does not exist is refused. A package keeps its service id for ever, also
/// when its channel is removed and created again. A create or an update makes the framework fetch
/// the services of the channel, which it reports as signal 90014 of the topic "ems".
class Channels {
 public:
  static constexpr std::uint64_t FIRST_SERVICE_ID = 900001;
  static constexpr int VIRTUAL_SERVICES_COMPLETE = 90014;

  Channels(Router& router, TvStore& store);

  std::vector<Channel> List() const;
  /// The package of the channel with this service id, if there is one.
  std::optional<std::string> PackageOfService(std::uint64_t serviceId) const;

  /// As `channels` in the reply of channel.list.
  Json::Value Dump() const;

 private:
  /// By package. Ids outlast their records.
  struct State {
    std::map<std::string, Json::Value> records;
    std::map<std::string, std::uint64_t> serviceIds;
  };

  static State ReadState(const Json::Value& section);
  bool Put(const std::string& text, bool mustExist);
  bool Remove(const std::string& text);
  void Store(State state);

  Router& m_router;
  TvStore& m_store;
  State m_state;
};

}  // namespace desk::tv
