// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/AppInfoDB.h"

#include <json/json.h>
#include <tzplatform_config.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "common/JsonText.h"
#include "common/Log.h"
#include "common/ORVConstants.h"

namespace {

enum SchemaColumn { INDEX_ID = 0, INDEX_NAME = 1, INDEX_TYPE = 2, INDEX_PRIMARY_KEY = 5 };
constexpr int SCHEMA_COLUMN_COUNT = 6;
const std::string PRIMARY_KEY_OPTION = "PRIMARY KEY";
const std::string COLUMN_PACKAGE_ID = "package_id";
const std::string COLUMN_VARIABLES = "variables";

/// The columns that hold a string of the record. The reserved columns are in no list: their texts
/// stay empty.
const std::vector<std::pair<std::string, std::string AppInfo::*>> IDENTITY_COLUMNS = {
    {COLUMN_PACKAGE_ID, &AppInfo::m_sPackageID}, {"app_id", &AppInfo::m_sAppID},
    {"widget_id", &AppInfo::m_sWidgetID},        {"service_id", &AppInfo::m_sServiceID},
    {"version", &AppInfo::m_sVersion},
};

std::string MakeDBFilePath() {
  const char* pDirectory = tzplatform_getenv(TZ_SYS_RW_APP);
  return (pDirectory != nullptr ? std::string(pDirectory) : std::string()) + STORE_PATH;
}

/// Fixed when the process starts.
const std::string s_sDBFilePath = MakeDBFilePath();

struct SqliteFree {
  void operator()(char* pText) const { sqlite3_free(pText); }
};
using SqliteText = std::unique_ptr<char, SqliteFree>;

const char* TextOr(const char* pText, const char* pDefault) {
  return pText != nullptr ? pText : pDefault;
}

Json::Value ToJsonObject(const MetadataMap& rMetadata, const std::string& rType) {
  Json::Value object(Json::objectValue);
  const auto iter = rMetadata.find(rType);
  if (iter == rMetadata.end()) {
    return object;
  }
  for (const auto& [sKey, sValue] : iter->second) {
    object[sKey] = sValue;
  }
  return object;
}

std::string MakeVariablesText(const AppInfo& rAppInfo) {
  MetadataMap metadata;
  rAppInfo.GetAllMetadata(metadata);

  Json::Value root;
  for (const std::string& rType : {METADATA_ORV_TYPE, METADATA_ORV_DATA}) {
    const Json::Value object = ToJsonObject(metadata, rType);
    if (!object.empty()) {
      root[rType] = object;
    }
  }
  return JsonText::Write(root);
}

/// Values are inserted into the statements without escaping or binding. A value with a single quote
/// could therefore run SQL of its own: no text is made then, which counts as a failed statement.
/// Intentional: docs/behaviour.md, "A single quote in any value".
bool HasQuote(const std::vector<std::string>& rValues) {
  return std::any_of(rValues.begin(), rValues.end(), [](const std::string& rValue) {
    return rValue.find('\'') != std::string::npos;
  });
}

/// Null, like the other texts, when there is no statement to run.
SqliteText MakeInsertText(const std::vector<std::string>& rValues) {
  if (HasQuote(rValues)) {
    return nullptr;
  }
  std::string sList;
  const char* pSeparator = "";
  for (const std::string& rValue : rValues) {
    sList += pSeparator;
    sList += "'" + rValue + "'";
    pSeparator = ", ";
  }
  return SqliteText(
      sqlite3_mprintf("INSERT INTO %s VALUES( %s )", STORE_TABLE.c_str(), sList.c_str()));
}

SqliteText MakeUpdateText(const std::string& rAssignments, const std::string& rPackageID) {
  return SqliteText(sqlite3_mprintf("UPDATE %s set %s where %s = '%s'", STORE_TABLE.c_str(),
                                    rAssignments.c_str(), COLUMN_PACKAGE_ID.c_str(),
                                    rPackageID.c_str()));
}

SqliteText MakeDeleteText(const std::string& rPackageID) {
  if (HasQuote({rPackageID})) {
    return nullptr;
  }
  return SqliteText(sqlite3_mprintf("DELETE from %s where %s = '%s'", STORE_TABLE.c_str(),
                                    COLUMN_PACKAGE_ID.c_str(), rPackageID.c_str()));
}

std::map<std::string, std::string> ReadRow(sqlite3_stmt* pStatement, int columnCount) {
  std::map<std::string, std::string> row;
  for (int i = 0; i < columnCount; ++i) {
    const auto* pText = reinterpret_cast<const char*>(sqlite3_column_text(pStatement, i));
    row.emplace(sqlite3_column_name(pStatement, i), TextOr(pText, ""));
  }
  return row;
}

}  // namespace

std::map<int, AppInfoDB::ColumnInfo> AppInfoDB::s_mapColumnInfo = AppInfoDB::MakeColumnInfo();

std::map<int, AppInfoDB::ColumnInfo> AppInfoDB::MakeColumnInfo() {
  std::map<int, ColumnInfo> columns;
  int index = 0;
  for (const ColumnInfo& rColumn : std::vector<ColumnInfo>{{"package_id", "TEXT PRIMARY KEY"},
                                                           {"app_id", "TEXT"},
                                                           {"widget_id", "TEXT"},
                                                           {"service_id", "TEXT"},
                                                           {"version", "TEXT"},
                                                           {"variables", "TEXT"},
                                                           {"extra_data1", "TEXT"},
                                                           {"extra_data2", "TEXT"},
                                                           {"extra_data3", "TEXT"},
                                                           {"extra_data4", "TEXT"}}) {
    columns[index++] = rColumn;
  }
  return columns;
}

AppInfoDB::~AppInfoDB() {
  if (m_pDB == nullptr) {
    return;
  }
  sqlite3_close(m_pDB);
  m_pDB = nullptr;
}

void AppInfoDB::OpenDB() {
  ORV_LOG_INFO("[Info] Start");
  const int length = GetDBFileSize();
  if (length == 0 || !OpendDBConnection() || !CheckIntegrity() || !CheckSchema() ||
      !CreateTable()) {
    RestoreDBFile();
  }
}

int AppInfoDB::GetDBFileSize() {
  std::ifstream stream(s_sDBFilePath, std::ios::in | std::ios::binary);
  stream.seekg(0, std::ios::end);
  // -1 when the file does not exist: unlike an empty file, it is not restored.
  const int length = static_cast<int>(stream.tellg());
  stream.close();
  ORV_LOG_DEBUG("[Debug] length = %d", length);
  return length;
}

bool AppInfoDB::OpendDBConnection() {
  if (sqlite3_open(s_sDBFilePath.c_str(), &m_pDB) == SQLITE_OK) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] Fail to sqlite3_open.(error : %d)", sqlite3_errcode(m_pDB));
  return false;
}

bool AppInfoDB::CheckIntegrity() {
  char* pErrMsg = nullptr;
  const int ret =
      sqlite3_exec(m_pDB, "pragma integrity_check", IntegrityCheckCallBack, nullptr, &pErrMsg);
  if (ret == SQLITE_OK) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] integrity_check is failed. err_msg : %s", TextOr(pErrMsg, ""));
  sqlite3_free(pErrMsg);
  return false;
}

bool AppInfoDB::CheckSchema() {
  const std::string sQuery = "PRAGMA table_info('" + STORE_TABLE + "')";
  char* pErrMsg = nullptr;
  const int ret = sqlite3_exec(m_pDB, sQuery.c_str(), SchemaCheckCallback, nullptr, &pErrMsg);
  if (ret == SQLITE_OK) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] DB has been corrupted. error msg : %s", TextOr(pErrMsg, ""));
  sqlite3_free(pErrMsg);
  return false;
}

int AppInfoDB::IntegrityCheckCallBack(void* pContext, int argc, char** argv, char** azColName) {
  ORV_LOG_INFO("[Info] start");
  std::string sResult = argc > 0 ? TextOr(argv[0], "") : "";
  for (char& rCharacter : sResult) {
    rCharacter = static_cast<char>(std::tolower(static_cast<unsigned char>(rCharacter)));
  }
  if (sResult == "ok") {
    ORV_LOG_DEBUG("[Debug] DB integrity check OK");
    return 0;
  }
  ORV_LOG_ERROR("[ERROR] DB integrity check failed");
  return 1;
}

int AppInfoDB::SchemaCheckCallback(void* pContext, int argc, char** argv, char** azColName) {
  if (argc < SCHEMA_COLUMN_COUNT || argv[INDEX_ID] == nullptr) {
    return 1;
  }

  const int cid = static_cast<int>(std::strtol(argv[INDEX_ID], nullptr, 10));
  ORV_LOG_DEBUG("[Debug] cid = %d", cid);
  // The look-up of an unknown index leaves a blank entry in the schema: the create statement that
  // follows is then refused, and the next start creates the file again. Intentional:
  // docs/behaviour.md, "An eleventh column leaves no table".
  const ColumnInfo& rColumn = s_mapColumnInfo[cid];

  const char* pName = argv[INDEX_NAME];
  if (pName == nullptr || rColumn.sName != pName) {
    ORV_LOG_DEBUG("[Debug] Name is not matched.(cid = %d), argv[INDEX_TYPE] = %s", cid,
                  TextOr(pName, "NULL"));
    return 1;
  }
  const char* pType = argv[INDEX_TYPE];
  if (pType == nullptr || rColumn.sType.find(pType) == std::string::npos) {
    ORV_LOG_DEBUG("[Debug] Type is not matched.(cid = %d), argv[INDEX_TYPE] = %s", cid,
                  TextOr(pType, "NULL"));
    return 1;
  }
  const char* pPrimaryKey = argv[INDEX_PRIMARY_KEY];
  if (!IsPrimaryKeyMatched(rColumn, pPrimaryKey)) {
    ORV_LOG_DEBUG(
        "[Debug] PRIMARY KEY option is not matched.(cid = %d), argv[INDEX_PRIMARY_KEY] = %s", cid,
        TextOr(pPrimaryKey, "NULL"));
    return 1;
  }
  return 0;
}

bool AppInfoDB::IsPrimaryKeyMatched(const ColumnInfo& rColumn, const char* pPrimaryKey) {
  if (pPrimaryKey == nullptr) {
    return false;
  }
  const long number = std::strtol(pPrimaryKey, nullptr, 10);
  const bool bPrimaryKey = rColumn.sType.find(PRIMARY_KEY_OPTION) != std::string::npos;
  return bPrimaryKey ? number != 0 : number != 1;
}

bool AppInfoDB::CreateTable() {
  if (m_pDB == nullptr) {
    return false;
  }

  m_DBQueryMaker.Clear();
  m_DBQueryMaker.SetTableName(STORE_TABLE);
  for (const auto& [index, rColumn] : s_mapColumnInfo) {
    m_DBQueryMaker.AddColumn(rColumn.sName, rColumn.sType);
  }
  const std::string sQuery = m_DBQueryMaker.GetQuery_TableCreate();
  const int ret = sqlite3_exec(m_pDB, sQuery.c_str(), nullptr, nullptr, nullptr);
  if (ret == SQLITE_OK) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] fail to sqlite3_exec - error:%d ", ret);
  return false;
}

void AppInfoDB::RestoreDBFile() {
  ORV_LOG_DEBUG("[Debug] DB will be removed and reopen DB");
  RemoveDBFile();
  // There is no second repair: without a table the daemon runs without a store.
  if (OpendDBConnection()) {
    CreateTable();
  }
}

void AppInfoDB::RemoveDBFile() {
  if (m_pDB != nullptr) {
    sqlite3_close(m_pDB);
    m_pDB = nullptr;
  }
  std::remove(s_sDBFilePath.c_str());
}

void AppInfoDB::GetColumnValues(const AppInfo& rAppInfo, std::vector<std::string>& rValues) {
  rValues.resize(s_mapColumnInfo.size());
  for (const auto& [index, rColumn] : s_mapColumnInfo) {
    if (rColumn.sName == COLUMN_VARIABLES) {
      rValues[index] = MakeVariablesText(rAppInfo);
    }
    for (const auto& [sName, pMember] : IDENTITY_COLUMNS) {
      if (rColumn.sName == sName) {
        rValues[index] = rAppInfo.*pMember;
      }
    }
  }
}

bool AppInfoDB::Execute(const char* pStatement) {
  // SQLite itself takes null for an empty statement, which succeeds.
  if (pStatement == nullptr) {
    return false;
  }
  return sqlite3_exec(m_pDB, pStatement, nullptr, nullptr, nullptr) == SQLITE_OK;
}

bool AppInfoDB::InsertNewRecord(const AppInfo* pAppInfo) {
  ORV_LOG_INFO("[Info] start");
  if (m_pDB == nullptr) {
    return false;
  }

  std::vector<std::string> values;
  GetColumnValues(*pAppInfo, values);
  const SqliteText pStatement = MakeInsertText(values);
  if (Execute(pStatement.get())) {
    return true;
  }

  // False even when the second attempt stores the row. Intentional: docs/behaviour.md, "An insert
  // over a row".
  if (DeleteRecord(pAppInfo->m_sPackageID)) {
    Execute(pStatement.get());
  }
  ORV_LOG_ERROR("[ERROR] insert error.");
  return false;
}

bool AppInfoDB::UpdateRecord(const AppInfo* pAppInfo) {
  ORV_LOG_INFO("[Info] start");
  if (m_pDB == nullptr) {
    return false;
  }

  std::vector<std::string> values;
  GetColumnValues(*pAppInfo, values);
  const SqliteText pStatement =
      HasQuote(values) ? nullptr
                       : MakeUpdateText(MakeAssignmentList(values), pAppInfo->m_sPackageID);
  if (Execute(pStatement.get())) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] update error.");
  return false;
}

std::string AppInfoDB::MakeAssignmentList(const std::vector<std::string>& rValues) {
  std::string sList;
  const char* pSeparator = "";
  for (const auto& [index, rColumn] : s_mapColumnInfo) {
    sList += pSeparator;
    sList += rColumn.sName + "='" + rValues[index] + "'";
    pSeparator = ", ";
  }
  return sList;
}

bool AppInfoDB::DeleteRecord(const std::string& rPackageID) {
  ORV_LOG_INFO("[Info] start");
  if (m_pDB == nullptr) {
    return false;
  }

  if (Execute(MakeDeleteText(rPackageID).get())) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] delete error.");
  return false;
}

bool AppInfoDB::LoadData(RowMap& rRows) {
  ORV_LOG_INFO("[Info] start");
  if (m_pDB == nullptr) {
    return false;
  }

  rRows.clear();
  const std::string sQuery = m_DBQueryMaker.GetQuery_Select_All();
  sqlite3_stmt* pStatement = nullptr;
  if (sqlite3_prepare_v2(m_pDB, sQuery.c_str(), -1, &pStatement, nullptr) != SQLITE_OK) {
    ORV_LOG_ERROR("[ERROR] sqlite3_prepare_v2() failed.(errmsg : %s)", sqlite3_errmsg(m_pDB));
    return false;
  }
  const int columnCount = sqlite3_column_count(pStatement);
  sqlite3_reset(pStatement);
  // A failed step ends the loop like the last row does.
  while (sqlite3_step(pStatement) == SQLITE_ROW) {
    std::map<std::string, std::string> row = ReadRow(pStatement, columnCount);
    const std::string sPackageID = row[COLUMN_PACKAGE_ID];
    if (!sPackageID.empty()) {
      rRows.emplace(sPackageID, std::move(row));
    }
  }
  sqlite3_finalize(pStatement);
  return true;
}
