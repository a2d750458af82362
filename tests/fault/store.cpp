// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/store.h"

#include <json/json.h>

#include <memory>
#include <sstream>
#include <stdexcept>

#include "fault/daemon.h"
#include "fault/packages.h"

namespace fault {
namespace {

using Row = std::vector<std::string>;

const std::vector<std::string> COLUMNS = {"package_id",  "app_id",     "widget_id",   "service_id",
                                          "version",     "variables",  "extra_data1", "extra_data2",
                                          "extra_data3", "extra_data4"};

class Connection {
 public:
  explicit Connection(int flags) {
    // By name: the default VFS may be the one with faults.
    if (sqlite3_open_v2((DATA_DIRECTORY + "appinfo.db").c_str(), &m_db, flags, "unix") !=
        SQLITE_OK) {
      Throw("cannot be opened");
    }
  }
  ~Connection() { sqlite3_close(m_db); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  std::vector<Row> Run(const std::string& sql, const Row& values = {}) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(m_db, sql.c_str(), -1, &raw, nullptr) != SQLITE_OK) {
      Throw(sql);
    }
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(raw,
                                                                               sqlite3_finalize);
    for (std::size_t i = 0; i < values.size(); ++i) {
      sqlite3_bind_text(raw, static_cast<int>(i) + 1, values[i].c_str(), -1, SQLITE_STATIC);
    }
    std::vector<Row> rows;
    int result = 0;
    while ((result = sqlite3_step(raw)) == SQLITE_ROW) {
      rows.push_back(ReadRow(raw));
    }
    if (result != SQLITE_DONE) {
      Throw(sql);
    }
    return rows;
  }

 private:
  static Row ReadRow(sqlite3_stmt* statement) {
    Row row;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
      row.emplace_back(text == nullptr ? "" : text);
    }
    return row;
  }

  [[noreturn]] void Throw(const std::string& what) {
    const std::string message = "store: " + what + ": " + sqlite3_errmsg(m_db);
    throw std::runtime_error(message);
  }

  sqlite3* m_db = nullptr;
};

/// As the daemon writes them.
std::string Variables(const fake::Package& package) {
  Json::Value root;
  for (const fake::App& app : package.apps) {
    for (const auto& [key, value] : app.metadata) {
      const std::string rest = key.substr(std::string(ORV_METADATA_PREFIX).size());
      const std::size_t slash = rest.find('/');
      root[rest.substr(0, slash)][rest.substr(slash + 1)] = value;
    }
  }
  Json::StreamWriterBuilder writer;
  writer["indentation"] = "";
  return Json::writeString(writer, root);
}

Row RowOf(const fake::Package& package) {
  const std::string app = package.apps.front().id;
  const std::string service = package.apps.size() > 1 ? package.apps.back().id : "";
  return {package.id, app, WidgetID(package), service, package.version, Variables(package)};
}

bool IsObject(const std::string& text) {
  Json::Value value;
  std::string errors;
  std::istringstream stream(text);
  return Json::parseFromStream(Json::CharReaderBuilder(), stream, &value, &errors) &&
         value.isObject();
}

void CheckColumns(Connection& store, std::vector<std::string>& wrong) {
  std::vector<std::string> columns;
  for (const Row& row : store.Run("PRAGMA table_info('appinfo')")) {
    columns.push_back(row.at(1));
  }
  if (columns != COLUMNS) {
    wrong.push_back("store: " + std::to_string(columns.size()) + " columns instead of the ten");
  }
}

}  // namespace

void StoreRows(const std::vector<fake::Package>& packages) {
  Connection store(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  std::string columns;
  for (const std::string& column : COLUMNS) {
    columns += (columns.empty() ? "" : ",") + column + " TEXT" +
               (column == COLUMNS.front() ? " PRIMARY KEY" : "");
  }
  store.Run("CREATE TABLE appinfo (" + columns + ")");
  for (const fake::Package& package : packages) {
    store.Run("INSERT INTO appinfo VALUES(?,?,?,?,?,?,'','','','')", RowOf(package));
  }
}

StoreLock::StoreLock(bool held) {
  if (!held) {
    return;
  }
  const std::string path = DATA_DIRECTORY + "appinfo.db";
  if (sqlite3_open_v2(path.c_str(), &m_db, SQLITE_OPEN_READWRITE, "unix") != SQLITE_OK ||
      sqlite3_exec(m_db, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw std::runtime_error("store: cannot be locked");
  }
}

StoreLock::~StoreLock() {
  sqlite3_close(m_db);
}

std::vector<std::string> WhatIsWrongWithTheStore() try {
  std::vector<std::string> wrong;
  Connection store(SQLITE_OPEN_READWRITE);
  const std::string integrity = store.Run("PRAGMA integrity_check").at(0).at(0);
  if (integrity != "ok") {
    wrong.push_back("store: integrity: " + integrity);
  }
  CheckColumns(store, wrong);
  for (const Row& row : store.Run("SELECT package_id, variables FROM appinfo")) {
    if (row[0].empty() || !IsObject(row[1])) {
      wrong.push_back("store: the row of \"" + row[0] + "\" has the variables " + row[1]);
    }
  }
  return wrong;
} catch (const std::runtime_error& error) {
  return {error.what()};
}

std::vector<std::string> StoredPackages() try {
  std::vector<std::string> packages;
  Connection store(SQLITE_OPEN_READWRITE);
  for (const Row& row : store.Run("SELECT package_id FROM appinfo ORDER BY 1")) {
    packages.push_back(row[0]);
  }
  return packages;
} catch (const std::runtime_error&) {
  return {};
}

}  // namespace fault
