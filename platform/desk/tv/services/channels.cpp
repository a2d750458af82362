// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/channels.h"

#include <algorithm>

#include "common/desk_error.h"
#include "common/json.h"

namespace desk::tv {
namespace {

constexpr char kSection[] = "channels";
constexpr char kRecords[] = "records";
constexpr char kIds[] = "service_ids";

// Null for a text that is no record.
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

}  // namespace

Channels::Channels(Router& router, TvStore& store) : m_router(router), m_store(store) {
  const auto add = [&](const char* method, auto operation) {
    router.Add(method, [operation](const Json::Value& request, const Caller&) {
      Json::Value answer(Json::objectValue);
      answer["ok"] = operation(RequireString(request, "record"));
      return answer;
    });
  };
  add("channel.create", [this](const std::string& text) { return Put(text, false); });
  add("channel.update", [this](const std::string& text) { return Put(text, true); });
  add("channel.remove", [this](const std::string& text) { return Remove(text); });
  router.Add("channel.list", [this](const Json::Value&, const Caller&) {
    Json::Value answer(Json::objectValue);
    answer["channels"] = Dump();
    return answer;
  });
}

Json::Value Channels::Dump() const {
  Json::Value list(Json::arrayValue);
  const Json::Value& section = m_store.Get(kSection);
  for (const std::string& package : section[kRecords].getMemberNames()) {
    Json::Value& item = list.append(section[kRecords][package]);
    item["service_id"] = section[kIds][package].asUInt64();
  }
  return list;
}

std::optional<std::string> Channels::PackageOfService(std::uint64_t serviceId) const {
  const Json::Value& section = m_store.Get(kSection);
  for (const std::string& package : section[kRecords].getMemberNames()) {
    if (section[kIds][package].asUInt64() == serviceId) {
      return package;
    }
  }
  return std::nullopt;
}

bool Channels::Put(const std::string& text, bool mustExist) {
  const Json::Value record = ParseRecord(text);
  if (record.isNull()) {
    return false;
  }
  const std::string package = record["pkg_id"].asString();
  Json::Value records = m_store.Get(kSection)[kRecords];
  const bool exists = records.isObject() && records.isMember(package);
  if (mustExist && !exists) {
    return false;
  }
  ServiceIdOf(package);
  records[package] = record;
  Store(kRecords, records);
  Tell();
  return true;
}

bool Channels::Remove(const std::string& text) {
  const Json::Value record = ParseRecord(text);
  Json::Value records = m_store.Get(kSection)[kRecords];
  if (record.isNull() || !records.isObject() || !records.isMember(record["pkg_id"].asString())) {
    return false;
  }
  records.removeMember(record["pkg_id"].asString());
  Store(kRecords, records);
  return true;
}

void Channels::Store(const char* member, const Json::Value& value) {
  Json::Value section = m_store.Get(kSection);
  section[member] = value;
  m_store.Set(kSection, section);
}

std::uint64_t Channels::ServiceIdOf(const std::string& package) {
  Json::Value ids = m_store.Get(kSection)[kIds];
  if (!ids.isObject()) {
    ids = Json::Value(Json::objectValue);
  }
  if (!ids.isMember(package)) {
    std::uint64_t next = FIRST_SERVICE_ID;
    for (const Json::Value& id : ids) {
      next = std::max(next, id.asUInt64() + 1);
    }
    ids[package] = static_cast<Json::UInt64>(next);
    Store(kIds, ids);
  }
  return ids[package].asUInt64();
}

void Channels::Tell() {
  Json::Value body(Json::objectValue);
  body["signal"] = VIRTUAL_SERVICES_COMPLETE;
  m_router.Emit("ems", body);
}

}  // namespace desk::tv
