// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/catalogue.h"

#include <sqlite3.h>

#include <utility>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::tv {
namespace {

constexpr char PURPOSE[] = "the catalogue of packages cannot be used";
constexpr char SCHEMA[] =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = NORMAL;"
    "CREATE TABLE IF NOT EXISTS package ("
    "  id TEXT PRIMARY KEY, version TEXT NOT NULL, label TEXT NOT NULL);"
    "CREATE TABLE IF NOT EXISTS app ("
    "  package TEXT NOT NULL, position INTEGER NOT NULL, id TEXT NOT NULL UNIQUE,"
    "  component TEXT NOT NULL, program TEXT NOT NULL, metadata TEXT NOT NULL,"
    "  PRIMARY KEY (package, position));";

std::vector<Metadata> MetadataFrom(const std::string& text) {
  std::vector<Metadata> metadata;
  for (const Json::Value& item : ParseJson(text)) {
    metadata.push_back({item["key"].asString(), item["value"].asString()});
  }
  return metadata;
}

}  // namespace

Catalogue::Catalogue(const std::string& path) : m_db(OpenDatabase(path, PURPOSE)) {
  Execute(SCHEMA);
  Load();
}

Catalogue::~Catalogue() = default;

const PackageManifest* Catalogue::Find(const std::string& package) const {
  const auto found = m_packages.find(package);
  return found == m_packages.end() ? nullptr : &found->second;
}

const PackageApp* Catalogue::FindApp(const std::string& appId) const {
  const PackageManifest* package = Find(PackageOfApp(appId));
  if (package == nullptr) {
    return nullptr;
  }
  for (const PackageApp& app : package->apps) {
    if (app.id == appId) {
      return &app;
    }
  }
  return nullptr;
}

void Catalogue::Put(const PackageManifest& manifest) {
  Execute("BEGIN IMMEDIATE");
  try {
    DeleteRows(manifest.id);
    Insert(manifest);
    Execute("COMMIT");
  } catch (const DeskError&) {
    sqlite3_exec(m_db.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
  m_packages[manifest.id] = manifest;
}

void Catalogue::Remove(const std::string& package) {
  Execute("BEGIN IMMEDIATE");
  try {
    DeleteRows(package);
    Execute("COMMIT");
  } catch (const DeskError&) {
    sqlite3_exec(m_db.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
  m_packages.erase(package);
}

void Catalogue::Load() {
  SqliteStatement packages(m_db.get(), "SELECT id, version, label FROM package", PURPOSE);
  while (packages.Step()) {
    PackageManifest& manifest = m_packages[packages.Text(0)];
    manifest.id = packages.Text(0);
    manifest.version = packages.Text(1);
    manifest.label = packages.Text(2);
  }
  SqliteStatement apps(m_db.get(),
                       "SELECT package, id, component, program, metadata FROM app "
                       "ORDER BY package, position",
                       PURPOSE);
  while (apps.Step()) {
    PackageApp app;
    app.id = apps.Text(1);
    app.component = apps.Text(2) == "ui" ? Component::Ui : Component::Service;
    app.program = apps.Text(3);
    app.metadata = MetadataFrom(apps.Text(4));
    m_packages[apps.Text(0)].apps.push_back(std::move(app));
  }
}

void Catalogue::Execute(const char* sql) {
  ExecuteSql(m_db.get(), sql, PURPOSE);
}

void Catalogue::Insert(const PackageManifest& manifest) {
  SqliteStatement(m_db.get(), "INSERT INTO package VALUES (?, ?, ?)", PURPOSE)
      .BindText(manifest.id)
      .BindText(manifest.version)
      .BindText(manifest.label)
      .Step();
  int position = 0;
  for (const PackageApp& app : manifest.apps) {
    SqliteStatement(m_db.get(), "INSERT INTO app VALUES (?, ?, ?, ?, ?, ?)", PURPOSE)
        .BindText(manifest.id)
        .BindInt(position++)
        .BindText(app.id)
        .BindText(ComponentName(app.component))
        .BindText(app.program)
        .BindText(FormatJson(ToJson(app.metadata)))
        .Step();
  }
}

void Catalogue::DeleteRows(const std::string& package) {
  SqliteStatement(m_db.get(), "DELETE FROM app WHERE package = ?", PURPOSE)
      .BindText(package)
      .Step();
  SqliteStatement(m_db.get(), "DELETE FROM package WHERE id = ?", PURPOSE).BindText(package).Step();
}

}  // namespace desk::tv
