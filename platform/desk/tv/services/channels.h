// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "tv/router.h"
#include "tv/tv_store.h"

namespace desk::tv {

/// The channel framework: the records handed over, each shown as a virtual channel, and channel.*.
/// Kept over power-off. Main loop only.
///
/// A record is one JSON object with a "pkg_id". Creating one that is there replaces it; updating or
/// removing one that is not there is refused. A package keeps its service id for good, also when
/// its channel goes and comes again. After a create or an update the framework has fetched the
/// channel's services, and tells it as signal 90014 of the topic "ems".
class Channels {
 public:
  static constexpr std::uint64_t FIRST_SERVICE_ID = 900001;
  static constexpr int VIRTUAL_SERVICES_COMPLETE = 90014;

  Channels(Router& router, TvStore& store);

  /// As the reply of channel.list has it in `channels`.
  Json::Value Dump() const;
  /// Package of the channel with this service id; nothing when there is none.
  std::optional<std::string> PackageOfService(std::uint64_t serviceId) const;

 private:
  bool Put(const std::string& text, bool mustExist);
  bool Remove(const std::string& text);
  void Store(const char* member, const Json::Value& value);
  std::uint64_t ServiceIdOf(const std::string& package);
  void Tell();

  Router& m_router;
  TvStore& m_store;
};

}  // namespace desk::tv
