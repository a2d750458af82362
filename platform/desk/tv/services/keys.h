// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "desk/common/paths.h"
#include "desk/common/sqlite.h"
#include "desk/tv/router.h"

namespace desk::tv {

/// Value of a settings key. A string may hold any byte but NUL.
using KeyValue = std::variant<int, std::string>;

/// The settings keys: key.* and the topic "key". Keys under db/ are written through to the disk;
/// keys under memory/ and rtc/ last until power-off. Main loop's thread only.
class Keys {
 public:
  /// Opens the file, writes the initial values of a new TV, and adds the methods. Throws DeskError.
  Keys(Router& router, const DeskPaths& paths);
  Keys(const Keys&) = delete;
  Keys& operator=(const Keys&) = delete;

  std::optional<KeyValue> Get(const std::string& key) const;
  /// The fallback when the key is not set or holds a string.
  int GetInt(const std::string& key, int fallback) const;
  /// Stores the value, then sends the event, even if the value stays the same. Returns the
  /// sequence number of the change. Throws DeskError: Usage for an invalid key or value, Failed
  /// when the disk cannot be written.
  std::int64_t Set(const std::string& key, const KeyValue& value);
  /// Sends the event of the removal. False when the key was not set.
  bool Unset(const std::string& key);
  /// Power-off: forgets everything that is not under db/. Sends no events.
  void DropVolatile();

  /// An object: key to value.
  Json::Value Dump() const;

 private:
  void AddMethods(Router& router);
  std::int64_t Store(const std::string& key, const KeyValue& value);
  void SendChange(std::int64_t seq, Json::Value entry);
  void Load();
  void Write(const std::string& key, const KeyValue& value);
  void Erase(const std::string& key);

  Router& m_router;
  const SqliteDatabase m_db;
  std::map<std::string, KeyValue> m_values;
  std::int64_t m_seq = 0;
};

}  // namespace desk::tv
