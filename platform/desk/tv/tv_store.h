// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>

namespace desk::tv {

/// State that the television keeps over power-off, besides settings keys and packages: one JSON
/// file with a section for each part. Main loop's thread only.
class TvStore {
 public:
  /// Reads the file if it exists. A file that cannot be parsed is renamed to *.broken, and the TV
  /// starts without it.
  explicit TvStore(std::string path);

  /// Null when the section was never set.
  const Json::Value& Get(const std::string& section) const;
  /// Writes the file before it returns. Throws DeskError (Failed), and changes nothing, when the
  /// file cannot be written.
  void Set(const std::string& section, const Json::Value& value);

 private:
  void Write(const Json::Value& root) const;

  const std::string m_path;
  Json::Value m_root;
};

}  // namespace desk::tv
