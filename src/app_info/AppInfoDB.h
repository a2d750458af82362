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
/// start. Any doubt about the file is answered by deleting it.
///
/// Not synchronised: all calls but LoadData() are made with the cache's app-list lock held.
/// Failures are a log line and a false; with no open database every statement is one.
class AppInfoDB {
 public:
  /// Package id to column name to text.
  using RowMap = std::map<std::string, std::map<std::string, std::string>>;

  AppInfoDB() = default;
  /// Closes the database. Does not run in the daemon, where the cache lives for ever.
  virtual ~AppInfoDB();
  AppInfoDB(const AppInfoDB&) = delete;
  AppInfoDB& operator=(const AppInfoDB&) = delete;

  /// Opens, checks and prepares the file. Called once; afterwards the store is usable, empty or, if
  /// even a fresh file could not be made, refuses every statement.
  void OpenDB();
  /// Replaces rRows by all rows. A row without a package id is left out. True also when the reading
  /// broke off.
  bool LoadData(RowMap& rRows);
  /// False whenever the first attempt failed, even if the repetition after deleting the row stored
  /// the record: callers rely on it.
  bool InsertNewRecord(const AppInfo* pAppInfo);
  /// An update that matches no row is a success.
  bool UpdateRecord(const AppInfo* pAppInfo);
  bool DeleteRecord(const std::string& rPackageID);
  /// Closes the database and deletes its file.
  void RemoveDBFile();

  /// One text per column, in column order. rValues is given empty.
  void GetColumnValues(const AppInfo& rAppInfo, std::vector<std::string>& rValues);

  /// Row callbacks of sqlite3_exec(): 0 to go on, anything else aborts the statement.
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

  /// The schema: column index to column. The schema check adds to it what it does not know.
  static std::map<int, ColumnInfo> s_mapColumnInfo;

  DBQueryMaker m_DBQueryMaker;
  sqlite3* m_pDB = nullptr;  ///< null while no database is open
};
