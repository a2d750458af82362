// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "tv/router.h"
#include "tv/services/channels.h"
#include "tv/tv_store.h"

namespace desk::tv {

/// The TV service: the list of services, what is tuned, and the signals; service.*, tune, signal.
/// Kept over power-off. Main loop only.
///
/// The list holds the services that were added by hand and one for each virtual channel. A tune is
/// told as signal 103 with the service id, 8 bytes, the lowest first.
class Broadcast {
 public:
  using SetKey = std::function<void(const std::string& key, const std::string& value)>;
  static constexpr int TUNE_TO_SERVICE = 103;

  Broadcast(Router& router, TvStore& store, const Channels& channels, SetKey setKey);

  /// The TV comes up on the service that it was on, if any, and says in a settings key of what kind
  /// that is; without one the key stays as it is.
  void TurnOn();

  /// As the reply of service.list has it in `services`.
  Json::Value Dump() const;
  /// As service.current replies, and `package`.
  Json::Value Tuned() const;

 private:
  void AddMethods(Router& router);
  std::optional<std::string> PackageOf(std::uint64_t id) const;
  void AddService(const Json::Value& request);
  void RemoveService(const Json::Value& request);
  void Tune(std::uint64_t id);
  void Signal(const Json::Value& request);

  Router& m_router;
  TvStore& m_store;
  const Channels& m_channels;
  const SetKey m_setKey;
};

}  // namespace desk::tv
