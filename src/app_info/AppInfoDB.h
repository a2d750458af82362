// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sqlite3.h>

#include <map>
#include <string>
#include <vector>

#include "app_info/AppInfo.h"
#include "common/DBQueryMaker.h"

/// The store: one row per record in a SQLite file, written through on every change and read once at
/// start. A file that fails a check is deleted, and the store starts empty.
///
/// Not synchronised: all calls except LoadData() are made with the cache's app-list lock held.
/// A failure is a log line and the result false; without an open database every statement fails. A
/// statement with a single quote in one of its values never reaches SQLite and counts as failed.
class AppInfoDB {
 public:
  /// Package id to column name to text.
  using RowMap = std::map<std::string, std::map<std::string, std::string>>;

  AppInfoDB() = default;
  /// Closes the database. Does not run in the daemon, which never destroys the cache.
  virtual ~AppInfoDB();
  AppInfoDB(const AppInfoDB&) = delete;
  AppInfoDB& operator=(const AppInfoDB&) = delete;

  /// Opens, checks and prepares the file. Called once. Afterwards the store holds its rows, or is
  /// empty, or fails every statement if not even a new file could be created.
  void OpenDB();
  /// Replaces rRows by all rows. A row without a package id is left out. True also when a read
  /// error ends the rows early.
  bool LoadData(RowMap& rRows);
  /// False whenever the first attempt failed, even if the second one, after deleting the row,
  /// stored the record. Intentional: docs/behaviour.md, "An insert over a row".
  bool InsertNewRecord(const AppInfo* pAppInfo);
  /// An update that matches no row is a success.
  bool UpdateRecord(const AppInfo* pAppInfo);
  bool DeleteRecord(const std::string& rPackageID);
  /// Closes the database and deletes its file.
  void RemoveDBFile();

  /// One text per column, in column order. rValues is empty at the call.
  void GetColumnValues(const AppInfo& rAppInfo, std::vector<std::string>& rValues);

  /// Row callbacks of sqlite3_exec(): 0 continues, any other result aborts the statement.
  static int IntegrityCheckCallBack(void* pContext, int argc, char** argv, char** azColName);
  static int SchemaCheckCallback(void* pContext, int argc, char** argv, char** azColName);

 private:
  struct ColumnInfo {
    std::string sName;
    std::string sType;  ///< declared type with its options
  };

  static std::map<int, ColumnInfo> MakeColumnInfo();
  static bool IsPrimaryKeyMatched(const ColumnInfo& rColumn, const char* pPrimaryKey);

  int GetDBFileSize();
  bool OpendDBConnection();
  bool CreateTable();
  void RestoreDBFile();
  bool CheckIntegrity();
  bool CheckSchema();
  bool Execute(const char* pStatement);
  std::string MakeAssignmentList(const std::vector<std::string>& rValues);

  /// The schema: column index to column. The schema check adds a blank entry for an unknown index.
  static std::map<int, ColumnInfo> s_mapColumnInfo;

  DBQueryMaker m_DBQueryMaker;
  sqlite3* m_pDB = nullptr;  ///< null while no database is open
};
