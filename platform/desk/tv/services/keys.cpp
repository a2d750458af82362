// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/keys.h"

#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::tv {
namespace {

constexpr char PURPOSE[] = "the settings keys cannot be stored";

struct InitialValue {
  const char* key;
  KeyValue value;
};

const InitialValue INITIAL_VALUES[] = {
    {"db/orv_channel/custom_ui_type", ""}, {"db/factory/factory_reset_count", 0},
    {"db/factory/service_reset_count", 0}, {"db/tellahub/reset/apps", 1},
    {"db/boot/last_service", ""},
};

struct SetRequest {
  std::string key;
  KeyValue value;
};

bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

bool IsPersistent(const std::string& key) {
  return StartsWith(key, "db/");
}

bool IsKey(const std::string& key) {
  for (const char* prefix : {"db/", "memory/", "rtc/"}) {
    if (StartsWith(key, prefix) && key.size() > std::string(prefix).size()) {
      return key.find('\0') == std::string::npos;
    }
  }
  return false;
}

void Check(const std::string& key, const KeyValue& value) {
  if (!IsKey(key)) {
    throw DeskError(DeskError::USAGE, "\"" + key +
                                          "\" is not a settings key: a key begins with db/, "
                                          "memory/ or rtc/");
  }
  const auto* text = std::get_if<std::string>(&value);
  if (text != nullptr && text->find('\0') != std::string::npos) {
    throw DeskError(DeskError::USAGE, "the value of " + key + " contains a NUL byte: remove it");
  }
}

// The type is part of the request: the value "1" may be either.
KeyValue ReadValue(const Json::Value& request) {
  const std::string type = RequireString(request, "type");
  const Json::Value& value = request["value"];
  if (type == "int" && value.isInt()) {
    return value.asInt();
  }
  if (type == "string" && value.isString()) {
    return value.asString();
  }
  throw DeskError(DeskError::USAGE, "the value is not of the type \"" + type +
                                        "\": a value is an int of 32 bits or a string");
}

SetRequest ReadSetRequest(const Json::Value& request) {
  const std::string key = RequireString(request, "key");
  return {key, ReadValue(request)};
}

Json::Value ToJson(const KeyValue& value) {
  const int* number = std::get_if<int>(&value);
  return number != nullptr ? Json::Value(*number) : Json::Value(std::get<std::string>(value));
}

Json::Value ToJson(const std::string& key, const KeyValue& value) {
  const bool isInt = std::holds_alternative<int>(value);
  return JsonObject({{"key", key}, {"type", isInt ? "int" : "string"}, {"value", ToJson(value)}});
}

}  // namespace

Keys::Keys(Router& router, const DeskPaths& paths)
    : m_router(router), m_db(OpenDatabase(paths.KeysDb(), PURPOSE)) {
  Load();
  AddMethods(router);
}

void Keys::Load() {
  ExecuteSql(m_db.get(),
             "PRAGMA journal_mode=WAL;"
             "PRAGMA synchronous=NORMAL;"
             "CREATE TABLE IF NOT EXISTS keys (key BLOB PRIMARY KEY, value) WITHOUT ROWID",
             PURPOSE);
  SqliteStatement rows(m_db.get(), "SELECT key, value FROM keys", PURPOSE);
  while (rows.Step()) {
    m_values[rows.Text(0)] = rows.IsInt(1) ? KeyValue(rows.Int(1)) : KeyValue(rows.Text(1));
  }
  if (!m_values.empty()) {
    return;
  }
  for (const InitialValue& initial : INITIAL_VALUES) {
    Write(initial.key, initial.value);
    m_values[initial.key] = initial.value;
  }
}

void Keys::Write(const std::string& key, const KeyValue& value) {
  SqliteStatement statement(m_db.get(), "INSERT OR REPLACE INTO keys (key, value) VALUES (?, ?)",
                            PURPOSE);
  statement.BindBlob(key);
  const int* number = std::get_if<int>(&value);
  if (number != nullptr) {
    statement.BindInt(*number);
  } else {
    statement.BindBlob(std::get<std::string>(value));
  }
  statement.Step();
}

void Keys::Erase(const std::string& key) {
  SqliteStatement(m_db.get(), "DELETE FROM keys WHERE key = ?", PURPOSE).BindBlob(key).Step();
}

void Keys::AddMethods(Router& router) {
  router.Add("key.get", [this](const Json::Value& request, const Caller&) {
    const std::string key = RequireString(request, "key");
    const std::optional<KeyValue> value = Get(key);
    Json::Value reply = value ? ToJson(key, *value) : Json::Value(Json::objectValue);
    reply["found"] = value.has_value();
    return reply;
  });
  // The reply precedes the event: the caller sees its own call return first.
  router.AddDeferred("key.set", [this](const Json::Value& request, const Caller&,
                                       const std::shared_ptr<Reply>& reply) {
    const SetRequest set = ReadSetRequest(request);
    const std::int64_t seq = Store(set.key, set.value);
    reply->Return(JsonObject({{"seq", Json::Int64(seq)}}));
    SendChange(seq, ToJson(set.key, set.value));
  });
  router.Add("key.unset", [this](const Json::Value& request, const Caller&) {
    return JsonObject({{"found", Unset(RequireString(request, "key"))}});
  });
  router.Add("key.list", [this](const Json::Value& request, const Caller&) {
    const std::string prefix = OptionalString(request, "prefix", "");
    Json::Value keys(Json::arrayValue);
    for (auto it = m_values.lower_bound(prefix);
         it != m_values.end() && StartsWith(it->first, prefix); ++it) {
      keys.append(ToJson(it->first, it->second));
    }
    return JsonObject({{"keys", keys}});
  });
  router.Add("key.watch", [this](const Json::Value& request, const Caller&) {
    RequireString(request, "key");
    return JsonObject({{"seq", Json::Int64(m_seq)}});
  });
}

std::optional<KeyValue> Keys::Get(const std::string& key) const {
  const auto found = m_values.find(key);
  return found == m_values.end() ? std::nullopt : std::make_optional(found->second);
}

int Keys::GetInt(const std::string& key, int fallback) const {
  const std::optional<KeyValue> value = Get(key);
  return value && std::holds_alternative<int>(*value) ? std::get<int>(*value) : fallback;
}

std::int64_t Keys::Store(const std::string& key, const KeyValue& value) {
  Check(key, value);
  if (IsPersistent(key)) {
    Write(key, value);
  }
  m_values[key] = value;
  return ++m_seq;
}

std::int64_t Keys::Set(const std::string& key, const KeyValue& value) {
  const std::int64_t seq = Store(key, value);
  SendChange(seq, ToJson(key, value));
  return seq;
}

bool Keys::Unset(const std::string& key) {
  if (m_values.count(key) == 0) {
    return false;
  }
  if (IsPersistent(key)) {
    Erase(key);
  }
  m_values.erase(key);
  const std::int64_t seq = ++m_seq;
  SendChange(seq, JsonObject({{"key", key}, {"type", "none"}, {"value", Json::Value()}}));
  return true;
}

void Keys::SendChange(std::int64_t seq, Json::Value entry) {
  entry["seq"] = Json::Int64(seq);
  m_router.Emit("key", entry);
}

void Keys::DropVolatile() {
  for (auto it = m_values.begin(); it != m_values.end();) {
    it = IsPersistent(it->first) ? std::next(it) : m_values.erase(it);
  }
}

Json::Value Keys::Dump() const {
  Json::Value keys(Json::objectValue);
  for (const auto& [key, value] : m_values) {
    keys[key] = ToJson(value);
  }
  return keys;
}

}  // namespace desk::tv
