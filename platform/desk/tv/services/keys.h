// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "common/paths.h"
#include "tv/router.h"

struct sqlite3;

namespace desk::tv {

/// The settings keys. Those under db/ are written through to the disk; those under memory/ and
/// rtc/ end with the power. A value is a number (32 bits) or a string of any bytes but NUL.
/// Main loop's thread only.
class Keys {
 public:
  /// Opens the file, giving a new TV its first values, and adds the methods key.*. Throws
  /// DeskError.
  Keys(Router& router, const DeskPaths& paths);
  ~Keys();
  Keys(const Keys&) = delete;
  Keys& operator=(const Keys&) = delete;

  std::optional<Json::Value> Get(const std::string& key) const;
  /// The number of a key, or the fallback when there is none or it is a string.
  int GetInt(const std::string& key, int fallback) const;
  /// Stores the value, then tells it, also when it is the old one. Returns the change's number.
  /// Throws DeskError: Usage for a key or a value that cannot be, Failed when the disk refuses.
  std::int64_t Set(const std::string& key, const Json::Value& value);
  /// Tells the removal. False when there was no such key.
  bool Unset(const std::string& key);
  /// Power-off: forgets what is not under db/, and tells nobody.
  void DropVolatile();

  /// An object: key to value.
  Json::Value Dump() const;

 private:
  void AddMethods(Router& router);
  void OnSet(const Json::Value& request, const std::shared_ptr<Reply>& reply);
  Json::Value List(const std::string& prefix) const;
  std::int64_t Store(const std::string& key, const Json::Value& value);
  void Tell(std::int64_t seq, const std::string& key, const Json::Value& value);
  void Open(const std::string& path);
  void Load();
  void Write(const std::string& key, const Json::Value& value);
  void Erase(const std::string& key);

  Router& m_router;
  sqlite3* m_db = nullptr;  ///< owned
  std::map<std::string, Json::Value> m_values;
  std::int64_t m_seq = 0;
};

}  // namespace desk::tv
