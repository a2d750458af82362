// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/DBQueryMaker.h"

#include "common/Log.h"

void DBQueryMaker::Clear() {
  m_sTableName.clear();
  m_vColumns.clear();
}

void DBQueryMaker::SetTableName(const std::string& rTableName) {
  m_sTableName = rTableName;
}

void DBQueryMaker::AddColumn(const std::string& rName, const std::string& rType) {
  m_vColumns.emplace_back(rName, rType);
}

std::string DBQueryMaker::GetQuery_TableCreate() const {
  std::string sQuery = "CREATE TABLE IF NOT EXISTS " + m_sTableName + "(";
  const char* pSeparator = "";
  for (const auto& [sName, sType] : m_vColumns) {
    sQuery.append(pSeparator).append(sName).append(" ").append(sType);
    pSeparator = ", ";
  }
  sQuery += ");";
  ORV_LOG_DEBUG("[Debug] query =%s", sQuery.c_str());
  return sQuery;
}

std::string DBQueryMaker::GetQuery_Select_All() const {
  std::string sQuery = "SELECT ";
  const char* pSeparator = "";
  for (const auto& rColumn : m_vColumns) {
    sQuery += pSeparator + rColumn.first;
    pSeparator = ", ";
  }
  sQuery += " FROM " + m_sTableName;
  ORV_LOG_DEBUG("[Debug] query =%s", sQuery.c_str());
  return sQuery;
}
