// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>

namespace desk::tv {

/// What the television itself keeps over power-off, beside settings keys and packages: one JSON
/// file with one section for each part. Main loop only.
class TvStore {
 public:
  /// Reads the file if it is there. One that cannot be read is kept beside as *.broken, and the TV
  /// starts without it.
  explicit TvStore(std::string path);

  /// Null for a section that was never set.
  const Json::Value& Get(const std::string& section) const;
  /// On the disk when it returns. Throws DeskError (Failed) and changes nothing when the file
  /// cannot be written.
  void Set(const std::string& section, const Json::Value& value);

 private:
  void Write(const Json::Value& root) const;

  const std::string m_path;
  Json::Value m_root;
};

}  // namespace desk::tv
