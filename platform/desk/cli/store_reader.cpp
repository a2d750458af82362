// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "cli/store_reader.h"

#include <sqlite3.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "cli/failure.h"
#include "common/desk_error.h"
#include "common/json.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

constexpr const char* QUERY = "SELECT * FROM appinfo ORDER BY package_id";
constexpr int BUSY_MS = 2000;

struct Close {
  void operator()(sqlite3* db) const { sqlite3_close(db); }
};
struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, Close>;
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

/// Result of a library call that did not work; kept apart because one of them can be helped.
struct StoreError {
  int code;
  std::string text;
};

[[noreturn]] void Raise(sqlite3* db, int code) {
  throw StoreError{code, db == nullptr ? sqlite3_errstr(code) : sqlite3_errmsg(db)};
}

Database Open(const std::string& path) {
  sqlite3* raw = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READONLY, nullptr);
  Database db(raw);
  if (code != SQLITE_OK) {
    Raise(raw, code);
  }
  sqlite3_extended_result_codes(raw, 1);
  sqlite3_busy_timeout(raw, BUSY_MS);
  return db;
}

Json::Value Decoded(const std::string& text) {
  if (text.empty()) {
    return text;
  }
  try {
    return ParseJson(text);
  } catch (const DeskError&) {
    return text;
  }
}

Json::Value Cell(sqlite3_stmt* statement, int column) {
  const unsigned char* text = sqlite3_column_text(statement, column);
  if (text == nullptr) {
    return Json::Value();
  }
  const std::string value(reinterpret_cast<const char*>(text),
                          static_cast<size_t>(sqlite3_column_bytes(statement, column)));
  const std::string name = sqlite3_column_name(statement, column);
  return name == "variables" ? Decoded(value) : Json::Value(value);
}

Json::Value Row(sqlite3_stmt* statement) {
  Json::Value row(Json::objectValue);
  for (int i = 0; i < sqlite3_column_count(statement); ++i) {
    row[sqlite3_column_name(statement, i)] = Cell(statement, i);
  }
  return row;
}

Json::Value ReadRows(const std::string& path) {
  const Database db = Open(path);
  sqlite3_stmt* raw = nullptr;
  int code = sqlite3_prepare_v2(db.get(), QUERY, -1, &raw, nullptr);
  const Statement statement(raw);
  if (code != SQLITE_OK) {
    Raise(db.get(), code);
  }
  Json::Value rows(Json::arrayValue);
  while ((code = sqlite3_step(raw)) == SQLITE_ROW) {
    rows.append(Row(raw));
  }
  if (code != SQLITE_DONE) {
    Raise(db.get(), code);
  }
  return rows;
}

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (fs::temp_directory_path() / "tv-store-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw Failure(Exit::Failed, "no directory for a copy of the store in " +
                                      fs::temp_directory_path().string() + ": is it writable?");
    }
    m_path = name;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  const fs::path& Path() const { return m_path; }

 private:
  fs::path m_path;
};

/// SQLite would finish an interrupted write by changing the file, so it does that to a copy.
Json::Value ReadRolledBackCopy(const std::string& path) {
  const TemporaryDirectory directory;
  const fs::path copy = directory.Path() / "appinfo.db";
  fs::copy_file(path, copy);
  std::error_code journalGone;
  fs::copy_file(path + "-journal", copy.string() + "-journal", journalGone);
  sqlite3* raw = nullptr;
  sqlite3_open(copy.c_str(), &raw);
  sqlite3_exec(raw, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr);
  sqlite3_close(raw);
  return ReadRows(copy.string());
}

bool HasLeftJournal(const StoreError& error) {
  return error.code == SQLITE_READONLY_ROLLBACK || error.code == SQLITE_READONLY_RECOVERY ||
         error.code == SQLITE_READONLY_CANTINIT || error.code == SQLITE_READONLY_DIRECTORY;
}

Failure AsFailure(const std::string& path, const StoreError& error) {
  switch (error.code & 0xff) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return Failure(Exit::Failed, "the store is damaged (" + error.text +
                                       "): the daemon removes " + path +
                                       " when it starts the next time");
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return Failure(Exit::Failed, "the store is being written to: try again");
    default:
      return Failure(Exit::Failed, "cannot read the store " + path + " (" + error.text +
                                       "): it is not what the daemon writes");
  }
}

Json::Value ReadWithJournal(const std::string& path) {
  try {
    return ReadRows(path);
  } catch (const StoreError& error) {
    if (!HasLeftJournal(error)) {
      throw;
    }
  }
  return ReadRolledBackCopy(path);
}

}  // namespace

std::string StorePath(const DeskPaths& paths) {
  return paths.DaemonData() + "/appinfo.db";
}

Json::Value ReadStore(const std::string& path) {
  std::error_code error;
  if (!fs::exists(path, error)) {
    throw Failure(Exit::NotFound, "there is no store yet at " + path +
                                      ": the daemon makes it when it starts (tv up)");
  }
  try {
    return ReadWithJournal(path);
  } catch (const StoreError& failed) {
    throw AsFailure(path, failed);
  }
}

}  // namespace desk
