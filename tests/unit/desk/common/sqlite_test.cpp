// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/sqlite.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace desk {
namespace {

class SqliteTest : public testing::Test {
 protected:
  SqliteTest() { ExecuteSql(m_db.get(), "CREATE TABLE t (a, b)", ""); }

  const SqliteDatabase m_db = OpenDatabase(":memory:", "the test");
};

TEST_F(SqliteTest, BoundValuesAreReadBack) {
  const std::string bytes("a\0'b", 4);
  SqliteStatement(m_db.get(), "INSERT INTO t VALUES (?, ?)", "").BindInt(-7).BindBlob(bytes).Step();
  SqliteStatement rows(m_db.get(), "SELECT a, b FROM t", "");
  ASSERT_TRUE(rows.Step());
  EXPECT_EQ(rows.ColumnCount(), 2);
  EXPECT_EQ(rows.ColumnName(1), "b");
  EXPECT_TRUE(rows.IsInt(0));
  EXPECT_FALSE(rows.IsInt(1));
  EXPECT_EQ(rows.Int(0), -7);
  EXPECT_EQ(rows.Text(0), "-7");
  EXPECT_EQ(rows.Text(1), bytes);
  EXPECT_FALSE(rows.Step());
}

TEST_F(SqliteTest, AnEmptyTextIsNotNull) {
  SqliteStatement(m_db.get(), "INSERT INTO t VALUES (?, ?)", "").BindText("").BindBlob("").Step();
  ExecuteSql(m_db.get(), "INSERT INTO t VALUES (NULL, NULL)", "");
  SqliteStatement rows(m_db.get(), "SELECT a, b FROM t", "");
  ASSERT_TRUE(rows.Step());
  EXPECT_FALSE(rows.IsNull(0));
  EXPECT_FALSE(rows.IsNull(1));
  ASSERT_TRUE(rows.Step());
  EXPECT_TRUE(rows.IsNull(0));
  EXPECT_EQ(rows.Text(0), "");
}

// Message of the error that the function throws.
template <typename Function>
std::string ErrorOf(Function function) {
  try {
    function();
  } catch (const SqliteError& error) {
    return std::to_string(error.Result()) + " " + error.what();
  }
  return "no error";
}

TEST_F(SqliteTest, AnErrorNamesThePurposeAndTheReason) {
  EXPECT_EQ(ErrorOf([&] { SqliteStatement(m_db.get(), "SELECT x FROM t", "the test"); }),
            "1 the test: no such column: x");
  EXPECT_EQ(ErrorOf([&] { SqliteStatement(m_db.get(), "SELECT x FROM t", ""); }),
            "1 no such column: x");
  EXPECT_EQ(ErrorOf([&] { ExecuteSql(m_db.get(), "DROP TABLE u", "the test"); }),
            "1 the test: no such table: u");
  EXPECT_EQ(ErrorOf([] { OpenDatabase("/no/such/file", "the test"); }),
            std::to_string(SQLITE_CANTOPEN) + " the test: unable to open database file");
}

TEST_F(SqliteTest, AStepThatFailsThrows) {
  ExecuteSql(m_db.get(), "CREATE UNIQUE INDEX one ON t (a); INSERT INTO t VALUES (1, 1)", "");
  SqliteStatement insert(m_db.get(), "INSERT INTO t VALUES (1, 2)", "");
  EXPECT_EQ(ErrorOf([&] { insert.Step(); }),
            std::to_string(SQLITE_CONSTRAINT) + " UNIQUE constraint failed: t.a");
}

TEST_F(SqliteTest, AParameterTooManyThrows) {
  SqliteStatement statement(m_db.get(), "SELECT ?", "");
  statement.BindInt(1);
  EXPECT_THROW(statement.BindInt(2), SqliteError);
}

}  // namespace
}  // namespace desk
