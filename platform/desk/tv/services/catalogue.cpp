// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/catalogue.h"

#include <sqlite3.h>

#include <utility>

#include "common/desk_error.h"
#include "common/json.h"

namespace desk::tv {
namespace {

constexpr char kSchema[] =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = NORMAL;"
    "CREATE TABLE IF NOT EXISTS package ("
    "  id TEXT PRIMARY KEY, version TEXT NOT NULL, label TEXT NOT NULL);"
    "CREATE TABLE IF NOT EXISTS app ("
    "  package TEXT NOT NULL, position INTEGER NOT NULL, id TEXT NOT NULL UNIQUE,"
    "  component TEXT NOT NULL, program TEXT NOT NULL, metadata TEXT NOT NULL,"
    "  PRIMARY KEY (package, position));";

[[noreturn]] void Fail(sqlite3* db) {
  throw DeskError(DeskError::Failed,
                  std::string("the catalogue of packages cannot be used: ") + sqlite3_errmsg(db));
}

class Statement {
 public:
  Statement(sqlite3* db, const char* sql) : m_db(db) {
    if (sqlite3_prepare_v2(db, sql, -1, &m_statement, nullptr) != SQLITE_OK) {
      Fail(db);
    }
  }
  ~Statement() { sqlite3_finalize(m_statement); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  Statement& Bind(const std::string& text) {
    sqlite3_bind_text(m_statement, ++m_bound, text.data(), static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
    return *this;
  }
  Statement& Bind(int number) {
    sqlite3_bind_int(m_statement, ++m_bound, number);
    return *this;
  }
  bool Step() {
    const int result = sqlite3_step(m_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
      Fail(m_db);
    }
    return result == SQLITE_ROW;
  }
  std::string Text(int column) {
    const void* text = sqlite3_column_blob(m_statement, column);
    const int size = sqlite3_column_bytes(m_statement, column);
    return text == nullptr ? std::string()
                           : std::string(static_cast<const char*>(text), static_cast<size_t>(size));
  }

 private:
  sqlite3* m_db;
  sqlite3_stmt* m_statement = nullptr;
  int m_bound = 0;
};

std::vector<Metadata> MetadataFrom(const std::string& text) {
  std::vector<Metadata> metadata;
  for (const Json::Value& item : ParseJson(text)) {
    metadata.push_back({item["key"].asString(), item["value"].asString()});
  }
  return metadata;
}

}  // namespace

Catalogue::Catalogue(const std::string& path) {
  try {
    if (sqlite3_open(path.c_str(), &m_db) != SQLITE_OK) {
      Fail(m_db);
    }
    Execute(kSchema);
    Load();
  } catch (...) {  // the handle is owned even when opening failed
    sqlite3_close(m_db);
    throw;
  }
}

Catalogue::~Catalogue() {
  sqlite3_close(m_db);
}

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
    sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
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
    sqlite3_exec(m_db, "ROLLBACK", nullptr, nullptr, nullptr);
    throw;
  }
  m_packages.erase(package);
}

void Catalogue::Load() {
  Statement packages(m_db, "SELECT id, version, label FROM package");
  while (packages.Step()) {
    PackageManifest& manifest = m_packages[packages.Text(0)];
    manifest.id = packages.Text(0);
    manifest.version = packages.Text(1);
    manifest.label = packages.Text(2);
  }
  Statement apps(m_db,
                 "SELECT package, id, component, program, metadata FROM app "
                 "ORDER BY package, position");
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
  if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
    Fail(m_db);
  }
}

void Catalogue::Insert(const PackageManifest& manifest) {
  Statement(m_db, "INSERT INTO package VALUES (?, ?, ?)")
      .Bind(manifest.id)
      .Bind(manifest.version)
      .Bind(manifest.label)
      .Step();
  int position = 0;
  for (const PackageApp& app : manifest.apps) {
    Statement(m_db, "INSERT INTO app VALUES (?, ?, ?, ?, ?, ?)")
        .Bind(manifest.id)
        .Bind(position++)
        .Bind(app.id)
        .Bind(ComponentName(app.component))
        .Bind(app.program)
        .Bind(FormatJson(ToJson(app.metadata)))
        .Step();
  }
}

void Catalogue::DeleteRows(const std::string& package) {
  Statement(m_db, "DELETE FROM app WHERE package = ?").Bind(package).Step();
  Statement(m_db, "DELETE FROM package WHERE id = ?").Bind(package).Step();
}

}  // namespace desk::tv
