// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/channels.h"

#include <algorithm>
#include <utility>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::tv {
namespace {

constexpr char SECTION[] = "channels";
constexpr char RECORDS[] = "records";
constexpr char SERVICE_IDS[] = "service_ids";

// Null for a text that is not a record.
Json::Value ParseRecord(const std::string& text) {
  Json::Value record;
  try {
    record = ParseJson(text);
  } catch (const DeskError&) {
    return {};
  }
  if (!record.isObject() || !record["pkg_id"].isString() || record["pkg_id"].asString().empty()) {
    return {};
  }
  return record;
}

std::uint64_t NextServiceId(const std::map<std::string, std::uint64_t>& used) {
  std::uint64_t next = Channels::FIRST_SERVICE_ID;
  for (const auto& [package, id] : used) {
    next = std::max(next, id + 1);
  }
  return next;
}

}  // namespace

Channels::Channels(Router& router, TvStore& store)
    : m_router(router), m_store(store), m_state(ReadState(store.Get(SECTION))) {
  const auto add = [&](const char* method, auto operation) {
    router.Add(method, [operation](const Json::Value& request, const Caller&) {
      return JsonObject({{"ok", operation(RequireString(request, "record"))}});
    });
  };
  add("channel.create", [this](const std::string& text) { return Put(text, false); });
  add("channel.update", [this](const std::string& text) { return Put(text, true); });
  add("channel.remove", [this](const std::string& text) { return Remove(text); });
  router.Add("channel.list", [this](const Json::Value&, const Caller&) {
    return JsonObject({{"channels", Dump()}});
  });
}

Channels::State Channels::ReadState(const Json::Value& section) {
  State state;
  if (!section.isObject()) {
    return state;
  }
  for (const std::string& package : section[RECORDS].getMemberNames()) {
    state.records[package] = section[RECORDS][package];
  }
  for (const std::string& package : section[SERVICE_IDS].getMemberNames()) {
    state.serviceIds[package] = section[SERVICE_IDS][package].asUInt64();
  }
  return state;
}

std::vector<Channel> Channels::List() const {
  std::vector<Channel> list;
  for (const auto& [package, record] : m_state.records) {
    const auto id = m_state.serviceIds.find(package);
    list.push_back({package, id == m_state.serviceIds.end() ? 0 : id->second, record});
  }
  return list;
}

std::optional<std::string> Channels::PackageOfService(std::uint64_t serviceId) const {
  for (const Channel& channel : List()) {
    if (channel.serviceId == serviceId) {
      return channel.package;
    }
  }
  return std::nullopt;
}

Json::Value Channels::Dump() const {
  Json::Value list(Json::arrayValue);
  for (const Channel& channel : List()) {
    list.append(channel.record)["service_id"] = Json::UInt64(channel.serviceId);
  }
  return list;
}

bool Channels::Put(const std::string& text, bool mustExist) {
  const Json::Value record = ParseRecord(text);
  if (record.isNull()) {
    return false;
  }
  const std::string package = record["pkg_id"].asString();
  if (mustExist && m_state.records.count(package) == 0) {
    return false;
  }
  State state = m_state;
  state.serviceIds.emplace(package, NextServiceId(state.serviceIds));
  state.records[package] = record;
  Store(std::move(state));
  m_router.Emit("ems", JsonObject({{"signal", VIRTUAL_SERVICES_COMPLETE}}));
  return true;
}

bool Channels::Remove(const std::string& text) {
  const Json::Value record = ParseRecord(text);
  State state = m_state;
  if (record.isNull() || state.records.erase(record["pkg_id"].asString()) == 0) {
    return false;
  }
  Store(std::move(state));
  return true;
}

void Channels::Store(State state) {
  Json::Value records(Json::objectValue);
  for (const auto& [package, record] : state.records) {
    records[package] = record;
  }
  Json::Value ids(Json::objectValue);
  for (const auto& [package, id] : state.serviceIds) {
    ids[package] = Json::UInt64(id);
  }
  m_store.Set(SECTION, JsonObject({{RECORDS, records}, {SERVICE_IDS, ids}}));
  m_state = std::move(state);
}

}  // namespace desk::tv
