// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "framework/tv_service_fields.h"

/// TV services, the TV-service signals, and the signals of the event proxy.
namespace fake {

/// Calls every subscriber of the signal on the calling thread. The payload is padded with zeros to
/// 8 bytes at least. Returns how many callbacks ran.
std::size_t FireTvSignal(int signal, const std::vector<std::uint8_t>& payload = {});
/// The same on a new thread, named "tv-signals", which ends before this returns.
std::size_t FireTvSignalOnThread(int signal, const std::vector<std::uint8_t>& payload = {});

template <typename T>
std::vector<std::uint8_t> Payload(const T& value) {
  std::vector<std::uint8_t> bytes(sizeof(T));
  std::memcpy(bytes.data(), &value, sizeof(T));
  return bytes;
}

struct TvSubscription {
  int signal = 0;
  int arguments[4] = {};
};

/// In the order of subscribing, over all subscribers.
std::vector<TvSubscription> TvSubscriptions();

/// The fields of one service, by field number.
struct Service {
  std::map<int, std::uint64_t> numbers;
  std::map<int, std::string> texts;
};

using framework::PACKAGE_ID_FIELD;
using framework::SERVICE_ID_FIELD;

/// A service with the two fields that the daemon fetches.
Service MakeService(std::uint64_t id, const std::string& package);

/// A search finds the services that meet all of its conditions, in the order of AddService(), and
/// returns the fetched fields of the first one.
void AddService(const Service& service);
/// The tuned service, which need not be in the list. Until it is set, nothing is tuned and
/// GetCurrentServiceInfo() returns 0.
void SetCurrentService(const Service& service);
void SetTvMode(int output, int source);

/// Calls the proxy's callback on the calling thread. False when the daemon did not subscribe to the
/// signal or there is no callback.
bool FireProxySignal(int signal);
std::vector<int> ProxySubscriptions();

}  // namespace fake
