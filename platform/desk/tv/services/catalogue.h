// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

#include "desk/common/sqlite.h"
#include "desk/package/manifest.h"

namespace desk::tv {

/// The installed packages: in memory, and in a SQLite file that is written first. Main loop only.
class Catalogue {
 public:
  /// Opens or makes the file. Throws DeskError (Failed).
  explicit Catalogue(const std::string& path);
  ~Catalogue();
  Catalogue(const Catalogue&) = delete;
  Catalogue& operator=(const Catalogue&) = delete;

  const std::map<std::string, PackageManifest>& All() const { return m_packages; }
  /// Null when it is not installed. Valid until the catalogue changes.
  const PackageManifest* Find(const std::string& package) const;
  /// Null for an id that no installed package has. Valid until the catalogue changes.
  const PackageApp* FindApp(const std::string& appId) const;

  /// Adds the package or replaces the row of the same id, whole or not at all. Throws DeskError
  /// (Failed).
  void Put(const PackageManifest& manifest);
  /// Nothing happens for a package that is not there. Throws DeskError (Failed).
  void Remove(const std::string& package);

 private:
  void Load();
  void Execute(const char* sql);
  void Insert(const PackageManifest& manifest);
  void DeleteRows(const std::string& package);

  const SqliteDatabase m_db;
  std::map<std::string, PackageManifest> m_packages;
};

}  // namespace desk::tv
