// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

/// TV services, the TV-service signals, and the signals of the event proxy.
namespace fake {

/// Calls every subscriber of the signal on the calling thread. The payload is padded with zeros to
/// 8 bytes at least. Returns how many callbacks ran.
std::size_t FireTvSignal(int signal, const std::vector<std::uint8_t>& payload = {});
/// The same on a thread of its own, named "tv-signals", that has ended when this returns.
std::size_t FireTvSignalOnThread(int signal, const std::vector<std::uint8_t>& payload = {});
/// Also to subscribers that did not ask for the signal.
std::size_t FireTvSignalToAll(int signal, const std::vector<std::uint8_t>& payload = {});

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

constexpr int kServiceIDField = 12;
constexpr int kPackageIDField = 179;

/// A service with the two fields that the daemon asks for.
Service MakeService(std::uint64_t id, const std::string& package);

/// A search finds the services that have all numbers it asks for, in the order of adding, and gives
/// the fetched fields of the first.
void AddService(const Service& service);
void ClearServices();
/// The tuned service, which need not be in the list. Before it is set nothing is tuned and
/// GetCurrentServiceInfo() gives 0.
void SetCurrentService(const Service& service);
void ClearCurrentService();
void SetTvMode(int output, int source);

/// Calls the proxy's callback on the calling thread when somebody subscribed to the signal.
bool FireProxySignal(int signal);
/// Also when nobody subscribed. False when there is no callback.
bool FireProxySignalToAll(int signal);
std::vector<int> ProxySubscriptions();

}  // namespace fake
