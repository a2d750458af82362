// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "desk/tv/router.h"
#include "desk/tv/services/channels.h"
#include "desk/tv/services/needs.h"
#include "desk/tv/tv_store.h"

namespace desk::tv {

/// A service of the broadcast: what a viewer tunes to.
struct BroadcastService {
  std::uint64_t id = 0;
  std::string package;  ///< of a virtual channel; otherwise empty
};

/// The TV service: the list of services, the one that is tuned, and the signals; service.*, tune,
/// signal. Survives power-off. Main loop only.
///
/// The list holds the services that were added by hand and one for each virtual channel. A tune is
/// reported as signal 103; its data is the service id as 8 bytes, least significant first.
class Broadcast {
 public:
  static constexpr int TUNE_TO_SERVICE = 103;

  Broadcast(const Needs& needs, TvStore& store, const Channels& channels);

  /// The TV comes up on the service that was tuned last, and writes its kind to a settings key.
  /// Without such a service the key stays as it is.
  void TurnOn();

  /// As `services` in the reply of service.list.
  Json::Value Dump() const;
  /// As the reply of service.current, plus `package`.
  Json::Value Tuned() const;

 private:
  using List = std::vector<BroadcastService>;

  void AddMethods(Router& router);
  std::optional<std::string> PackageOf(std::uint64_t id) const;
  void Add(const BroadcastService& service);
  void Remove(std::uint64_t id);
  void Tune(std::uint64_t id);
  void Signal(int number, const std::string& data);
  void Store(List services);
  List Without(std::uint64_t id) const;

  const Needs m_needs;
  TvStore& m_store;
  const Channels& m_channels;
  List m_services;  ///< added by hand
  std::optional<std::uint64_t> m_tuned;
};

}  // namespace desk::tv
