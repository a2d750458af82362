// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/broadcast.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::tv {
namespace {

constexpr char SERVICES[] = "services";
constexpr char TUNED[] = "tuned";
constexpr char LAST_SERVICE[] = "db/boot/last_service";
constexpr char VIRTUAL_SERVICE[] = "vc-service";
constexpr char ORDINARY_SERVICE[] = "tv-service";
constexpr int MAIN_OUTPUT = 1;
constexpr int BROADCAST_SOURCE = 0;

std::uint64_t ReadId(const Json::Value& request) {
  if (!request["id"].isUInt64()) {
    throw DeskError(DeskError::USAGE, "a service id is a number from 0 to 18446744073709551615");
  }
  return request["id"].asUInt64();
}

BroadcastService ReadService(const Json::Value& request) {
  return {ReadId(request), OptionalString(request, "package", "")};
}

std::vector<BroadcastService> ReadServices(const Json::Value& section) {
  std::vector<BroadcastService> services;
  for (const Json::Value& service : section) {
    services.push_back({service["id"].asUInt64(), service["package"].asString()});
  }
  return services;
}

struct SignalRequest {
  int number = 0;
  std::string data;  ///< hexadecimal
};

SignalRequest ReadSignal(const Json::Value& request) {
  const std::string data = OptionalString(request, "data", "");
  const bool hex =
      std::all_of(data.begin(), data.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
  if (!request["signal"].isInt() || !hex || data.size() % 2 != 0) {
    throw DeskError(DeskError::USAGE,
                    "a signal is a number, and its data has two hex digits per byte");
  }
  return {request["signal"].asInt(), data};
}

Json::Value ToJson(const BroadcastService& service) {
  return JsonObject({{"id", Json::UInt64(service.id)}, {"package", service.package}});
}

Json::Value ToJson(const std::vector<BroadcastService>& services) {
  Json::Value list(Json::arrayValue);
  for (const BroadcastService& service : services) {
    list.append(ToJson(service));
  }
  return list;
}

std::string HexBytes(std::uint64_t id) {
  constexpr char DIGITS[] = "0123456789abcdef";
  std::string text;
  for (int byte = 0; byte < 8; ++byte, id >>= 8) {
    text += DIGITS[(id >> 4) & 0xf];
    text += DIGITS[id & 0xf];
  }
  return text;
}

DeskError NoService(std::uint64_t id) {
  return DeskError(DeskError::NOT_FOUND,
                   "there is no service " + std::to_string(id) + ": see `tv service list`");
}

}  // namespace

Broadcast::Broadcast(const Needs& needs, TvStore& store, const Channels& channels)
    : m_needs(needs),
      m_store(store),
      m_channels(channels),
      m_services(ReadServices(store.Get(SERVICES))) {
  const Json::Value& tuned = store.Get(TUNED);
  if (tuned.isUInt64()) {
    m_tuned = tuned.asUInt64();
  }
  AddMethods(needs.router);
}

void Broadcast::AddMethods(Router& router) {
  router.Add("service.list", [this](const Json::Value&, const Caller&) {
    return JsonObject({{"services", Dump()}});
  });
  router.Add("service.find", [this](const Json::Value& request, const Caller&) {
    const std::optional<std::string> package = PackageOf(ReadId(request));
    Json::Value reply = JsonObject({{"found", package.has_value()}});
    if (package) {
      reply["package"] = *package;
    }
    return reply;
  });
  router.Add("service.current", [this](const Json::Value&, const Caller&) { return Tuned(); });
  router.Add("service.add", [this](const Json::Value& request, const Caller&) {
    Add(ReadService(request));
    return Json::Value(Json::objectValue);
  });
  router.Add("service.remove", [this](const Json::Value& request, const Caller&) {
    Remove(ReadId(request));
    return Json::Value(Json::objectValue);
  });
  router.Add("tune", [this](const Json::Value& request, const Caller&) {
    Tune(ReadId(request));
    return Json::Value(Json::objectValue);
  });
  router.Add("signal", [this](const Json::Value& request, const Caller&) {
    const SignalRequest signal = ReadSignal(request);
    Signal(signal.number, signal.data);
    return Json::Value(Json::objectValue);
  });
}

void Broadcast::TurnOn() {
  const std::optional<std::string> package = m_tuned ? PackageOf(*m_tuned) : std::nullopt;
  if (package) {
    m_needs.setKey(LAST_SERVICE, package->empty() ? ORDINARY_SERVICE : VIRTUAL_SERVICE);
  }
}

Json::Value Broadcast::Dump() const {
  List services = m_services;
  for (const Channel& channel : m_channels.List()) {
    services.push_back({channel.serviceId, channel.package});
  }
  return ToJson(services);
}

Json::Value Broadcast::Tuned() const {
  const std::optional<std::string> package = m_tuned ? PackageOf(*m_tuned) : std::nullopt;
  Json::Value reply = JsonObject(
      {{"found", package.has_value()}, {"output", MAIN_OUTPUT}, {"source", BROADCAST_SOURCE}});
  if (m_tuned) {
    reply["id"] = Json::UInt64(*m_tuned);
    reply["package"] = package.value_or("");
  }
  return reply;
}

std::optional<std::string> Broadcast::PackageOf(std::uint64_t id) const {
  for (const BroadcastService& service : m_services) {
    if (service.id == id) {
      return service.package;
    }
  }
  return m_channels.PackageOfService(id);
}

Broadcast::List Broadcast::Without(std::uint64_t id) const {
  List kept;
  std::copy_if(m_services.begin(), m_services.end(), std::back_inserter(kept),
               [&](const BroadcastService& service) { return service.id != id; });
  return kept;
}

void Broadcast::Store(List services) {
  m_store.Set(SERVICES, ToJson(services));
  m_services = std::move(services);
}

void Broadcast::Add(const BroadcastService& service) {
  if (m_channels.PackageOfService(service.id)) {
    throw DeskError(DeskError::FAILED, "service " + std::to_string(service.id) +
                                           " is a virtual channel: choose another id");
  }
  List services = Without(service.id);
  services.push_back(service);
  Store(std::move(services));
}

void Broadcast::Remove(std::uint64_t id) {
  if (m_channels.PackageOfService(id)) {
    throw DeskError(DeskError::FAILED, "service " + std::to_string(id) +
                                           " is a virtual channel: uninstall its package instead");
  }
  List services = Without(id);
  if (services.size() == m_services.size()) {
    throw NoService(id);
  }
  Store(std::move(services));
}

void Broadcast::Tune(std::uint64_t id) {
  if (!PackageOf(id)) {
    throw NoService(id);
  }
  m_store.Set(TUNED, Json::UInt64(id));
  m_tuned = id;
  Signal(TUNE_TO_SERVICE, HexBytes(id));
}

// Listeners of the channel framework's signal subscribe to another topic.
void Broadcast::Signal(int number, const std::string& data) {
  if (number == Channels::VIRTUAL_SERVICES_COMPLETE) {
    m_needs.router.Emit("ems", JsonObject({{"signal", number}}));
    return;
  }
  m_needs.router.Emit("tvs", JsonObject({{"signal", number}, {"data", data}}));
}

}  // namespace desk::tv
