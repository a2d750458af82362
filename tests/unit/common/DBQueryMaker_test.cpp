// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/DBQueryMaker.h"

#include <gmock/gmock.h>

#include "fake/control/log.h"
#include "support/log_matchers.h"

namespace {

using support::HasLog;
using testing::ElementsAre;

void Describe(DBQueryMaker& maker) {
  maker.SetTableName("apps");
  maker.AddColumn("id", "TEXT PRIMARY KEY");
  maker.AddColumn("name", "TEXT");
}

TEST(DBQueryMaker, TheCreateStatementNamesEveryColumnWithItsType) {
  DBQueryMaker maker;
  Describe(maker);
  EXPECT_EQ(maker.GetQuery_TableCreate(),
            "CREATE TABLE IF NOT EXISTS apps(id TEXT PRIMARY KEY, name TEXT);");
}

TEST(DBQueryMaker, TheSelectStatementNamesEveryColumnAndHasNoSemicolon) {
  DBQueryMaker maker;
  Describe(maker);
  EXPECT_EQ(maker.GetQuery_Select_All(), "SELECT id, name FROM apps");
}

TEST(DBQueryMaker, BothStatementsAreLoggedAtInfoLevel) {
  DBQueryMaker maker;
  Describe(maker);
  maker.GetQuery_TableCreate();
  maker.GetQuery_Select_All();
  EXPECT_THAT(
      fake::LogTexts(DLOG_INFO),
      ElementsAre("[Debug] query =CREATE TABLE IF NOT EXISTS apps(id TEXT PRIMARY KEY, name TEXT);",
                  "[Debug] query =SELECT id, name FROM apps"));
}

TEST(DBQueryMaker, NothingIsKnownBeforeATableIsDescribed) {
  DBQueryMaker maker;
  EXPECT_EQ(maker.GetQuery_TableCreate(), "CREATE TABLE IF NOT EXISTS ();");
  EXPECT_EQ(maker.GetQuery_Select_All(), "SELECT  FROM ");
}

TEST(DBQueryMaker, ClearForgetsTableAndColumns) {
  DBQueryMaker maker;
  Describe(maker);
  maker.Clear();
  EXPECT_EQ(maker.GetQuery_Select_All(), "SELECT  FROM ");
  Describe(maker);
  EXPECT_EQ(maker.GetQuery_Select_All(), "SELECT id, name FROM apps");
}

TEST(DBQueryMaker, ABlankColumnStaysInTheStatements) {
  DBQueryMaker maker;
  Describe(maker);
  maker.AddColumn("", "");
  EXPECT_EQ(maker.GetQuery_TableCreate(),
            "CREATE TABLE IF NOT EXISTS apps(id TEXT PRIMARY KEY, name TEXT,  );");
  EXPECT_EQ(maker.GetQuery_Select_All(), "SELECT id, name,  FROM apps");
}

TEST(DBQueryMaker, APercentSignReachesTheLogAsItIs) {
  DBQueryMaker maker;
  maker.SetTableName("%s%n");
  maker.AddColumn("%d", "TEXT");
  maker.GetQuery_Select_All();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] query =SELECT %d FROM %s%n"));
}

}  // namespace
