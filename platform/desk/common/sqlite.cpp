// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/sqlite.h"

#include <sqlite3.h>

namespace desk {
namespace {

[[noreturn]] void Fail(sqlite3* database, int result, const char* purpose) {
  const char* reason = database == nullptr ? sqlite3_errstr(result) : sqlite3_errmsg(database);
  throw SqliteError(result, *purpose == '\0' ? reason : std::string(purpose) + ": " + reason);
}

}  // namespace

void SqliteClose::operator()(sqlite3* database) const {
  sqlite3_close(database);
}

SqliteDatabase OpenDatabase(const std::string& path, const char* purpose) {
  sqlite3* handle = nullptr;
  const int result = sqlite3_open(path.c_str(), &handle);
  SqliteDatabase database(handle);  // there may be a handle even after a failure
  if (result != SQLITE_OK) {
    Fail(handle, result, purpose);
  }
  return database;
}

void ExecuteSql(sqlite3* database, const char* sql, const char* purpose) {
  const int result = sqlite3_exec(database, sql, nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) {
    Fail(database, result, purpose);
  }
}

SqliteStatement::SqliteStatement(sqlite3* database, const char* sql, const char* purpose)
    : m_database(database), m_purpose(purpose) {
  Check(sqlite3_prepare_v2(database, sql, -1, &m_statement, nullptr));
}

SqliteStatement::~SqliteStatement() {
  sqlite3_finalize(m_statement);
}

SqliteStatement& SqliteStatement::BindText(const std::string& text) {
  Check(sqlite3_bind_text(m_statement, ++m_bound, text.c_str(), static_cast<int>(text.size()),
                          SQLITE_TRANSIENT));
  return *this;
}

SqliteStatement& SqliteStatement::BindBlob(const std::string& bytes) {
  Check(sqlite3_bind_blob(m_statement, ++m_bound, bytes.c_str(), static_cast<int>(bytes.size()),
                          SQLITE_TRANSIENT));
  return *this;
}

SqliteStatement& SqliteStatement::BindInt(int number) {
  Check(sqlite3_bind_int(m_statement, ++m_bound, number));
  return *this;
}

bool SqliteStatement::Step() {
  const int result = sqlite3_step(m_statement);
  if (result != SQLITE_ROW && result != SQLITE_DONE) {
    Fail(m_database, result, m_purpose);
  }
  return result == SQLITE_ROW;
}

int SqliteStatement::ColumnCount() const {
  return sqlite3_column_count(m_statement);
}

std::string SqliteStatement::ColumnName(int column) const {
  const char* name = sqlite3_column_name(m_statement, column);
  return name == nullptr ? "" : name;
}

bool SqliteStatement::IsNull(int column) const {
  return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

bool SqliteStatement::IsInt(int column) const {
  return sqlite3_column_type(m_statement, column) == SQLITE_INTEGER;
}

int SqliteStatement::Int(int column) const {
  return sqlite3_column_int(m_statement, column);
}

std::string SqliteStatement::Text(int column) const {
  const unsigned char* text = sqlite3_column_text(m_statement, column);
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column));
  return text == nullptr ? "" : std::string(reinterpret_cast<const char*>(text), size);
}

void SqliteStatement::Check(int result) const {
  if (result != SQLITE_OK) {
    Fail(m_database, result, m_purpose);
  }
}

}  // namespace desk
