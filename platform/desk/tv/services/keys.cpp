// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/keys.h"

#include <sqlite3.h>

#include "common/desk_error.h"
#include "common/json.h"

namespace desk::tv {
namespace {

struct FirstValue {
  const char* key;
  Json::Value value;
};

const FirstValue FIRST_VALUES[] = {
    {"db/orv_channel/custom_ui_type", ""}, {"db/factory/factory_reset_count", 0},
    {"db/factory/service_reset_count", 0}, {"db/tellahub/reset/apps", 1},
    {"db/boot/last_service", ""},
};

bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

bool IsKept(const std::string& key) {
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

const char* TypeOf(const Json::Value& value) {
  return value.isNull() ? "none" : value.isString() ? "string" : "int";
}

void Check(const std::string& key, const Json::Value& value) {
  if (!IsKey(key)) {
    throw DeskError(DeskError::Usage,
                    "\"" + key + "\" is no settings key: one begins with db/, memory/ or rtc/");
  }
  const bool good = value.isString() ? value.asString().find('\0') == std::string::npos
                                     : value.isInt() && !value.isBool();
  if (!good) {
    throw DeskError(
        DeskError::Usage,
        "the value of " + key + " is neither a number of 32 bits nor a string without NUL");
  }
}

Json::Value Describe(const std::string& key, const Json::Value& value) {
  Json::Value entry(Json::objectValue);
  entry["key"] = key;
  entry["type"] = TypeOf(value);
  entry["value"] = value;
  return entry;
}

// "type" says how the value is meant: "1" may be either.
Json::Value TypedValue(const Json::Value& request) {
  const std::string type = RequireString(request, "type");
  const Json::Value& value = request["value"];
  if ((type == "int" && value.isInt()) || (type == "string" && value.isString())) {
    return value;
  }
  throw DeskError(DeskError::Usage,
                  "the value is no \"" + type + "\": a key is an int or a string");
}

// A statement that ends with its scope.
class Statement {
 public:
  Statement(sqlite3* db, const char* sql) : m_db(db) {
    if (sqlite3_prepare_v2(db, sql, -1, &m_statement, nullptr) != SQLITE_OK) {
      Fail();
    }
  }
  ~Statement() { sqlite3_finalize(m_statement); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  sqlite3_stmt* Get() const { return m_statement; }
  void Bind(int index, const std::string& text) {
    sqlite3_bind_blob(m_statement, index, text.data(), static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
  }
  bool Step() {
    const int result = sqlite3_step(m_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
      Fail();
    }
    return result == SQLITE_ROW;
  }
  std::string Text(int column) const {
    const void* bytes = sqlite3_column_blob(m_statement, column);
    const int size = sqlite3_column_bytes(m_statement, column);
    return bytes == nullptr
               ? std::string()
               : std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
  }

 private:
  [[noreturn]] void Fail() {
    throw DeskError(DeskError::Failed,
                    std::string("the settings keys cannot be kept: ") + sqlite3_errmsg(m_db));
  }

  sqlite3* m_db;
  sqlite3_stmt* m_statement = nullptr;
};

void Execute(sqlite3* db, const char* sql) {
  Statement statement(db, sql);
  while (statement.Step()) {
  }
}

}  // namespace

Keys::Keys(Router& router, const DeskPaths& paths) : m_router(router) {
  try {
    Open(paths.KeysDb());
  } catch (const DeskError&) {
    sqlite3_close(m_db);
    throw;
  }
  AddMethods(router);
}

Keys::~Keys() {
  sqlite3_close(m_db);
}

void Keys::Open(const std::string& path) {
  if (sqlite3_open(path.c_str(), &m_db) != SQLITE_OK) {
    throw DeskError(DeskError::Failed, "cannot open " + path + ": " + sqlite3_errmsg(m_db));
  }
  Execute(m_db, "PRAGMA journal_mode=WAL");
  Execute(m_db, "PRAGMA synchronous=NORMAL");
  Execute(m_db, "CREATE TABLE IF NOT EXISTS keys (key BLOB PRIMARY KEY, value) WITHOUT ROWID");
  Load();
  if (!m_values.empty()) {
    return;
  }
  for (const FirstValue& first : FIRST_VALUES) {
    Write(first.key, first.value);
    m_values[first.key] = first.value;
  }
}

void Keys::Load() {
  Statement statement(m_db, "SELECT key, value FROM keys");
  while (statement.Step()) {
    const bool isInt = sqlite3_column_type(statement.Get(), 1) == SQLITE_INTEGER;
    m_values[statement.Text(0)] = isInt ? Json::Value(sqlite3_column_int(statement.Get(), 1))
                                        : Json::Value(statement.Text(1));
  }
}

void Keys::Write(const std::string& key, const Json::Value& value) {
  Statement statement(m_db, "INSERT OR REPLACE INTO keys (key, value) VALUES (?, ?)");
  statement.Bind(1, key);
  if (value.isString()) {
    // Never null: a string of no bytes is a value too.
    const std::string text = value.asString();
    sqlite3_bind_blob(statement.Get(), 2, text.c_str(), static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
  } else {
    sqlite3_bind_int(statement.Get(), 2, value.asInt());
  }
  statement.Step();
}

void Keys::Erase(const std::string& key) {
  Statement statement(m_db, "DELETE FROM keys WHERE key = ?");
  statement.Bind(1, key);
  statement.Step();
}

void Keys::AddMethods(Router& router) {
  router.Add("key.get", [this](const Json::Value& request, const Caller&) {
    const std::string key = RequireString(request, "key");
    const std::optional<Json::Value> value = Get(key);
    Json::Value reply = value ? Describe(key, *value) : Json::Value(Json::objectValue);
    reply["found"] = value.has_value();
    return reply;
  });
  router.AddDeferred("key.set",
                     [this](const Json::Value& request, const Caller&,
                            const std::shared_ptr<Reply>& reply) { OnSet(request, reply); });
  router.Add("key.unset", [this](const Json::Value& request, const Caller&) {
    Json::Value reply;
    reply["found"] = Unset(RequireString(request, "key"));
    return reply;
  });
  router.Add("key.list", [this](const Json::Value& request, const Caller&) {
    return List(OptionalString(request, "prefix", ""));
  });
  router.Add("key.watch", [this](const Json::Value& request, const Caller&) {
    RequireString(request, "key");
    Json::Value reply;
    reply["seq"] = Json::Int64(m_seq);
    return reply;
  });
}

// The answer goes out before the change is told: whoever sets a key sees its own call end first.
void Keys::OnSet(const Json::Value& request, const std::shared_ptr<Reply>& reply) {
  const std::string key = RequireString(request, "key");
  const Json::Value value = TypedValue(request);
  const std::int64_t seq = Store(key, value);
  Json::Value answer;
  answer["seq"] = Json::Int64(seq);
  reply->Return(answer);
  Tell(seq, key, value);
}

std::optional<Json::Value> Keys::Get(const std::string& key) const {
  const auto found = m_values.find(key);
  return found == m_values.end() ? std::nullopt : std::make_optional(found->second);
}

int Keys::GetInt(const std::string& key, int fallback) const {
  const std::optional<Json::Value> value = Get(key);
  return value && value->isInt() ? value->asInt() : fallback;
}

std::int64_t Keys::Store(const std::string& key, const Json::Value& value) {
  Check(key, value);
  if (IsKept(key)) {
    Write(key, value);
  }
  m_values[key] = value;
  return ++m_seq;
}

std::int64_t Keys::Set(const std::string& key, const Json::Value& value) {
  const std::int64_t seq = Store(key, value);
  Tell(seq, key, value);
  return seq;
}

bool Keys::Unset(const std::string& key) {
  if (m_values.count(key) == 0) {
    return false;
  }
  if (IsKept(key)) {
    Erase(key);
  }
  m_values.erase(key);
  Tell(++m_seq, key, Json::Value());
  return true;
}

void Keys::Tell(std::int64_t seq, const std::string& key, const Json::Value& value) {
  Json::Value body = Describe(key, value);
  body["seq"] = Json::Int64(seq);
  m_router.Emit("key", body);
}

void Keys::DropVolatile() {
  for (auto it = m_values.begin(); it != m_values.end();) {
    it = IsKept(it->first) ? std::next(it) : m_values.erase(it);
  }
}

Json::Value Keys::List(const std::string& prefix) const {
  Json::Value reply;
  reply["keys"] = Json::Value(Json::arrayValue);
  for (auto it = m_values.lower_bound(prefix);
       it != m_values.end() && StartsWith(it->first, prefix); ++it) {
    reply["keys"].append(Describe(it->first, it->second));
  }
  return reply;
}

Json::Value Keys::Dump() const {
  Json::Value keys(Json::objectValue);
  for (const auto& entry : m_values) {
    keys[entry.first] = entry.second;
  }
  return keys;
}

}  // namespace desk::tv
