// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "desk/common/desk_error.h"

struct sqlite3;
struct sqlite3_stmt;

namespace desk {

/// A failed call of the SQLite library.
class SqliteError : public DeskError {
 public:
  SqliteError(int result, const std::string& message)
      : DeskError(DeskError::FAILED, message), m_result(result) {}

  /// SQLITE_BUSY, SQLITE_CORRUPT, …
  int Result() const { return m_result; }

 private:
  int m_result;
};

struct SqliteClose {
  void operator()(sqlite3* database) const;
};
/// An open database; its statements must end first.
using SqliteDatabase = std::unique_ptr<sqlite3, SqliteClose>;

/// Opens the file, creating it if necessary. `purpose` begins the message of an error. Throws
/// SqliteError.
SqliteDatabase OpenDatabase(const std::string& path, const char* purpose);

/// Runs statements that return no rows of interest, separated by ";". Throws SqliteError.
void ExecuteSql(sqlite3* database, const char* sql, const char* purpose);

/// One prepared statement. Used by one thread at a time. Every member function may throw
/// SqliteError.
class SqliteStatement {
 public:
  /// `purpose` begins the message of every error; an empty one leaves SQLite's own message. Neither
  /// text is copied: pass literals.
  SqliteStatement(sqlite3* database, const char* sql, const char* purpose);
  ~SqliteStatement();
  SqliteStatement(const SqliteStatement&) = delete;
  SqliteStatement& operator=(const SqliteStatement&) = delete;

  /// Each call binds the next parameter. The value is copied; an empty text is not NULL.
  SqliteStatement& BindText(const std::string& text);
  SqliteStatement& BindBlob(const std::string& bytes);
  SqliteStatement& BindInt(int number);

  /// True while there is a row.
  bool Step();

  /// The columns of the current row, counted from 0.
  int ColumnCount() const;
  std::string ColumnName(int column) const;
  bool IsNull(int column) const;
  bool IsInt(int column) const;
  int Int(int column) const;
  /// Empty for NULL. May hold any byte, NUL included.
  std::string Text(int column) const;

 private:
  void Check(int result) const;

  sqlite3* const m_database;
  const char* const m_purpose;
  sqlite3_stmt* m_statement = nullptr;  ///< owned
  int m_bound = 0;
};

}  // namespace desk
