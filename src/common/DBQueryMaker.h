// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

/// Builds the two statements that depend on the columns of a table. Both texts contain no columns
/// until a table has been described.
class DBQueryMaker {
 public:
  DBQueryMaker() = default;
  virtual ~DBQueryMaker() = default;
  DBQueryMaker(const DBQueryMaker&) = delete;
  DBQueryMaker& operator=(const DBQueryMaker&) = delete;

  /// Forgets the table and its columns.
  void Clear();
  void SetTableName(const std::string& rTableName);
  /// Columns keep the order of the calls. rType is the declared type with its options.
  void AddColumn(const std::string& rName, const std::string& rType);

  /// Each logs the text that it returns.
  std::string GetQuery_TableCreate() const;
  std::string GetQuery_Select_All() const;

 private:
  std::vector<std::pair<std::string, std::string>> m_vColumns;
  std::string m_sTableName;
};
