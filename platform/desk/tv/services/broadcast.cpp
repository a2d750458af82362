// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/broadcast.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "common/desk_error.h"
#include "common/json.h"

namespace desk::tv {
namespace {

constexpr char kServices[] = "services";
constexpr char kTuned[] = "tuned";
constexpr char kLastService[] = "db/boot/last_service";
constexpr char kVirtual[] = "vc-service";
constexpr char kOrdinary[] = "tv-service";
// The main output, and broadcast as its source.
constexpr int kOutput = 1;
constexpr int kSource = 0;

std::uint64_t IdIn(const Json::Value& request) {
  if (!request["id"].isUInt64()) {
    throw DeskError(DeskError::Usage, "a service id is a number from 0 to 18446744073709551615");
  }
  return request["id"].asUInt64();
}

std::string Hex(std::uint64_t id) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (int byte = 0; byte < 8; ++byte, id >>= 8) {
    text += digits[(id >> 4) & 0xf];
    text += digits[id & 0xf];
  }
  return text;
}

DeskError NoService(std::uint64_t id) {
  return DeskError(DeskError::NotFound,
                   "there is no service " + std::to_string(id) + ": see `tv service list`");
}

}  // namespace

Broadcast::Broadcast(Router& router, TvStore& store, const Channels& channels, SetKey setKey)
    : m_router(router), m_store(store), m_channels(channels), m_setKey(std::move(setKey)) {
  AddMethods(router);
}

void Broadcast::AddMethods(Router& router) {
  router.Add("service.list", [this](const Json::Value&, const Caller&) {
    Json::Value answer(Json::objectValue);
    answer["services"] = Dump();
    return answer;
  });
  router.Add("service.find", [this](const Json::Value& request, const Caller&) {
    const std::optional<std::string> package = PackageOf(IdIn(request));
    Json::Value answer(Json::objectValue);
    answer["found"] = package.has_value();
    if (package) {
      answer["package"] = *package;
    }
    return answer;
  });
  router.Add("service.current", [this](const Json::Value&, const Caller&) { return Tuned(); });
  router.Add("service.add", [this](const Json::Value& request, const Caller&) {
    AddService(request);
    return Json::Value(Json::objectValue);
  });
  router.Add("service.remove", [this](const Json::Value& request, const Caller&) {
    RemoveService(request);
    return Json::Value(Json::objectValue);
  });
  router.Add("tune", [this](const Json::Value& request, const Caller&) {
    Tune(IdIn(request));
    return Json::Value(Json::objectValue);
  });
  router.Add("signal", [this](const Json::Value& request, const Caller&) {
    Signal(request);
    return Json::Value(Json::objectValue);
  });
}

void Broadcast::TurnOn() {
  const Json::Value tuned = Tuned();
  if (tuned["found"].asBool()) {
    m_setKey(kLastService, tuned["package"].asString().empty() ? kOrdinary : kVirtual);
  }
}

Json::Value Broadcast::Dump() const {
  Json::Value list(Json::arrayValue);
  for (const Json::Value& service : m_store.Get(kServices)) {
    list.append(service);
  }
  for (const Json::Value& channel : m_channels.Dump()) {
    Json::Value& item = list.append(Json::objectValue);
    item["id"] = channel["service_id"];
    item["package"] = channel["pkg_id"];
  }
  return list;
}

Json::Value Broadcast::Tuned() const {
  const Json::Value& tuned = m_store.Get(kTuned);
  Json::Value answer(Json::objectValue);
  answer["found"] = false;
  answer["output"] = kOutput;
  answer["source"] = kSource;
  if (tuned.isUInt64()) {
    const std::optional<std::string> package = PackageOf(tuned.asUInt64());
    answer["found"] = package.has_value();
    answer["id"] = tuned;
    answer["package"] = package.value_or("");
  }
  return answer;
}

std::optional<std::string> Broadcast::PackageOf(std::uint64_t id) const {
  for (const Json::Value& service : m_store.Get(kServices)) {
    if (service["id"].asUInt64() == id) {
      return service["package"].asString();
    }
  }
  return m_channels.PackageOfService(id);
}

void Broadcast::AddService(const Json::Value& request) {
  const std::uint64_t id = IdIn(request);
  if (m_channels.PackageOfService(id)) {
    throw DeskError(DeskError::Failed,
                    "service " + std::to_string(id) + " is a virtual channel: choose another id");
  }
  Json::Value kept(Json::arrayValue);
  for (const Json::Value& service : m_store.Get(kServices)) {
    if (service["id"].asUInt64() != id) {
      kept.append(service);
    }
  }
  Json::Value& added = kept.append(Json::objectValue);
  added["id"] = Json::UInt64(id);
  added["package"] = OptionalString(request, "package", "");
  m_store.Set(kServices, kept);
}

void Broadcast::RemoveService(const Json::Value& request) {
  const std::uint64_t id = IdIn(request);
  if (m_channels.PackageOfService(id)) {
    throw DeskError(DeskError::Failed, "service " + std::to_string(id) +
                                           " is a virtual channel: it goes with its package");
  }
  const Json::Value& services = m_store.Get(kServices);
  Json::Value kept(Json::arrayValue);
  for (const Json::Value& service : services) {
    if (service["id"].asUInt64() != id) {
      kept.append(service);
    }
  }
  if (kept.size() == services.size()) {
    throw NoService(id);
  }
  m_store.Set(kServices, kept);
}

void Broadcast::Tune(std::uint64_t id) {
  if (!PackageOf(id)) {
    throw NoService(id);
  }
  m_store.Set(kTuned, Json::UInt64(id));
  Json::Value body(Json::objectValue);
  body["signal"] = TUNE_TO_SERVICE;
  body["data"] = Hex(id);
  m_router.Emit("tvs", body);
}

// The signal of the channel framework is told where its listeners are.
void Broadcast::Signal(const Json::Value& request) {
  const std::string data = OptionalString(request, "data", "");
  const bool hex =
      std::all_of(data.begin(), data.end(), [](unsigned char c) { return std::isxdigit(c) != 0; });
  if (!request["signal"].isInt() || !hex || data.size() % 2 != 0) {
    throw DeskError(DeskError::Usage,
                    "a signal is a number, its data two hex digits for each byte");
  }
  Json::Value body(Json::objectValue);
  body["signal"] = request["signal"];
  if (request["signal"].asInt() == Channels::VIRTUAL_SERVICES_COMPLETE) {
    m_router.Emit("ems", body);
    return;
  }
  body["data"] = data;
  m_router.Emit("tvs", body);
}

}  // namespace desk::tv
