// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "app_info/AppInfoDB.h"
#include "fake/control/calls.h"
#include "fake/control/log.h"
#include "support/log_matchers.h"
#include "unit/app_info/records.h"

/// The store's file: how it is opened, judged and replaced.
namespace {

class AppInfoDBFile : public testing::Test {
 protected:
  void TearDown() override { records::ExpectLevelsFitTheirWords(); }
};

using records::ExecuteOnStore;
using records::QueryStore;
using records::StoredPackages;
using records::StorePath;
using records::StoreRow;
using support::HasLog;
using support::HasLogsInOrder;
using support::HasLogTimes;
using support::ReadFile;
using support::Texts;
using support::WriteFile;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr char RESTORE[] = "[Debug] DB will be removed and reopen DB";
constexpr char SCHEMA_FAULT[] = "[ERROR] DB has been corrupted. error msg : query aborted";
constexpr char CREATE_QUERY[] =
    "[Debug] query =CREATE TABLE IF NOT EXISTS appinfo(package_id TEXT PRIMARY KEY, app_id TEXT, "
    "widget_id TEXT, service_id TEXT, version TEXT, variables TEXT, extra_data1 TEXT, "
    "extra_data2 TEXT, extra_data3 TEXT, extra_data4 TEXT);";

/// The table with one column declared differently, and one row.
void MakeTable(const std::string& declared, const std::string& instead) {
  std::string sql = records::CREATE_TABLE;
  sql.replace(sql.find(declared), declared.size(), instead);
  ExecuteOnStore(sql);
  ExecuteOnStore("INSERT INTO appinfo(package_id) VALUES('a')");
}

/// Checks that the store accepts a record and returns it.
void ExpectUsable(AppInfoDB& db) {
  const auto record = records::MakeLayer("usable", "a", "1");
  EXPECT_TRUE(db.InsertNewRecord(record.get()));
  AppInfoDB::RowMap rows;
  EXPECT_TRUE(db.LoadData(rows));
  EXPECT_EQ(rows.count("usable"), 1u);
}

void ExpectRefusing(AppInfoDB& db) {
  const auto record = records::MakeLayer("refused", "a", "1");
  EXPECT_FALSE(db.InsertNewRecord(record.get()));
  EXPECT_FALSE(db.UpdateRecord(record.get()));
  EXPECT_FALSE(db.DeleteRecord("refused"));
  AppInfoDB::RowMap rows = {{"kept", {}}};
  EXPECT_FALSE(db.LoadData(rows));
}

TEST_F(AppInfoDBFile, AMissingFileIsMadeAndIsNoCorruption) {
  records::MakeStoreDirectory();
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] Start", "[Debug] length = -1", "[Info] start",
                                            "[Debug] DB integrity check OK", CREATE_QUERY));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, TheTableHasTenTextColumnsInTheirOrder) {
  records::MakeStoreDirectory();
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(
      QueryStore("SELECT cid, name, type, pk FROM pragma_table_info('appinfo')"),
      ElementsAre(
          ElementsAre("0", "package_id", "TEXT", "1"), ElementsAre("1", "app_id", "TEXT", "0"),
          ElementsAre("2", "widget_id", "TEXT", "0"), ElementsAre("3", "service_id", "TEXT", "0"),
          ElementsAre("4", "version", "TEXT", "0"), ElementsAre("5", "variables", "TEXT", "0"),
          ElementsAre("6", "extra_data1", "TEXT", "0"),
          ElementsAre("7", "extra_data2", "TEXT", "0"),
          ElementsAre("8", "extra_data3", "TEXT", "0"),
          ElementsAre("9", "extra_data4", "TEXT", "0")));
}

TEST_F(AppInfoDBFile, ThePathOfTheFileIsTakenOnceAndStays) {
  records::MakeStoreDirectory();
  fake::Fail("tzplatform_getenv", -1, fake::FOREVER);
  AppInfoDB db;
  db.OpenDB();
  ExpectUsable(db);
  fake::ClearFaults();
  EXPECT_THAT(StoredPackages(), ElementsAre("usable"));
}

TEST_F(AppInfoDBFile, AGoodFileIsKeptWithItsRows) {
  StoreRow("a", "null\n");
  StoreRow("b", "null\n");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), Not(HasLog(RESTORE)));
  for (int cid = 0; cid < 10; ++cid) {
    EXPECT_THAT(fake::LogTexts(), HasLogTimes("[Debug] cid = " + std::to_string(cid), 1));
  }
  EXPECT_THAT(StoredPackages(), ElementsAre("a", "b"));
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, AnEmptyFileIsRemovedAndCreatedAgain) {
  WriteFile(StorePath(), "");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] Start", "[Debug] length = 0", RESTORE, CREATE_QUERY));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, AReplacedFileIsClosedBeforeTheNewOneIsOpened) {
  MakeTable("service_id TEXT", "other_name TEXT");
  AppInfoDB db;
  db.OpenDB();
  ASSERT_THAT(fake::LogTexts(), HasLog(RESTORE));
  EXPECT_EQ(records::OpenCount(), 1);
}

TEST_F(AppInfoDBFile, AFileThatIsNoDatabaseIsReplaced) {
  WriteFile(StorePath(), std::string(5000, 'x'));
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(
      fake::LogTexts(),
      HasLogsInOrder(Texts({"[Debug] length = 5000",
                            "[ERROR] integrity_check is failed. err_msg : file is not a database",
                            RESTORE, CREATE_QUERY})));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, AFileOfOneByteIsFilled) {
  WriteFile(StorePath(), "x");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), HasLogsInOrder(Texts({"[Debug] length = 1", CREATE_QUERY})));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, AFileOfTwoToTenBytesIsReplaced) {
  for (std::size_t length = 2; length <= 10; ++length) {
    WriteFile(StorePath(), std::string(length, 'x'));
    fake::ClearLog();
    AppInfoDB db;
    db.OpenDB();
    EXPECT_THAT(fake::LogTexts(),
                HasLogsInOrder(Texts({"[Debug] length = " + std::to_string(length),
                                      "[Debug] DB will be removed and reopen DB", CREATE_QUERY})));
    EXPECT_THAT(StoredPackages(), IsEmpty());
  }
}

TEST_F(AppInfoDBFile, AFileWithADestroyedPageIsReplaced) {
  for (int i = 0; i < 200; ++i) {
    StoreRow("package" + std::to_string(i), std::string(300, 'v'));
  }
  std::string content = ReadFile(StorePath());
  ASSERT_GT(content.size(), 4u * 4096);
  content.replace(4096, 2 * 4096, std::string(2 * 4096, '\xee'));
  WriteFile(StorePath(), content);
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), HasLog(RESTORE));
  EXPECT_THAT(fake::LogTexts(),
              Contains(StartsWith("[ERROR] integrity_check is failed. err_msg : ")));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, AFileCutShortIsReplaced) {
  for (int i = 0; i < 200; ++i) {
    StoreRow("package" + std::to_string(i), std::string(300, 'v'));
  }
  const std::string content = ReadFile(StorePath());
  WriteFile(StorePath(), content.substr(0, content.size() / 2));
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), HasLog(RESTORE));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, AnIntegrityReportOtherThanOkReplacesTheFile) {
  StoreRow("a", "null\n");
  // A NOT NULL column with a null: the file is well-formed, and the check reports it.
  ExecuteOnStore("CREATE TABLE other(x); INSERT INTO other VALUES(NULL)");
  ExecuteOnStore(
      "PRAGMA writable_schema=ON;"
      "UPDATE sqlite_master SET sql='CREATE TABLE other(x NOT NULL)' WHERE name='other'");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] start", "[ERROR] DB integrity check failed",
                                    "[ERROR] integrity_check is failed. err_msg : query aborted",
                                    RESTORE, CREATE_QUERY})));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, WithoutItsDirectoryTheStoreRefusesEverything) {
  const std::string path = StorePath();
  std::filesystem::remove_all(path.substr(0, path.rfind('/')));
  AppInfoDB db;
  db.OpenDB();
  const std::string fault = "[ERROR] Fail to sqlite3_open.(error : 14)";
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] Start", "[Debug] length = -1", fault, RESTORE, fault));
  ExpectRefusing(db);
}

TEST_F(AppInfoDBFile, ADirectoryWithContentInItsPlaceCannotBeReplaced) {
  WriteFile(StorePath() + "/file", "content");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), HasLog("[ERROR] Fail to sqlite3_open.(error : 14)"));
  EXPECT_THAT(fake::LogTexts(), HasLogTimes(RESTORE, 1));
  EXPECT_EQ(ReadFile(StorePath() + "/file"), "content");
  ExpectRefusing(db);
}

TEST_F(AppInfoDBFile, AnotherNameForAColumnLosesAllRows) {
  MakeTable("service_id TEXT", "other_id TEXT");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(
      fake::LogTexts(),
      HasLogsInOrder(Texts({"[Debug] cid = 3",
                            "[Debug] Name is not matched.(cid = 3), argv[INDEX_TYPE] = other_id",
                            SCHEMA_FAULT, RESTORE, CREATE_QUERY})));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] cid = 4")));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, AnotherTypeForAColumnLosesAllRows) {
  MakeTable("version TEXT", "version INTEGER");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(
      fake::LogTexts(),
      HasLogsInOrder(Texts({"[Debug] Type is not matched.(cid = 4), argv[INDEX_TYPE] = INTEGER",
                            SCHEMA_FAULT, RESTORE})));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, APartOfTheTypesTextIsEnough) {
  MakeTable("version TEXT", "version TEX");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), Not(HasLog(RESTORE)));
  EXPECT_THAT(StoredPackages(), ElementsAre("a"));
}

TEST_F(AppInfoDBFile, AColumnWithoutATypePasses) {
  MakeTable("version TEXT", "version");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), Not(HasLog(RESTORE)));
  EXPECT_THAT(StoredPackages(), ElementsAre("a"));
}

TEST_F(AppInfoDBFile, AMissingPrimaryKeyLosesAllRows) {
  MakeTable("package_id TEXT PRIMARY KEY", "package_id TEXT");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Debug] PRIMARY KEY option is not matched.(cid = 0), "
                                    "argv[INDEX_PRIMARY_KEY] = 0",
                                    SCHEMA_FAULT, RESTORE})));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, AnotherColumnInFrontInThePrimaryKeyLosesAllRows) {
  ExecuteOnStore(
      "CREATE TABLE appinfo(package_id TEXT, app_id TEXT, widget_id TEXT, service_id TEXT, "
      "version TEXT, variables TEXT, extra_data1 TEXT, extra_data2 TEXT, extra_data3 TEXT, "
      "extra_data4 TEXT, PRIMARY KEY(app_id, package_id))");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Debug] cid = 0", "[Debug] cid = 1",
                                    "[Debug] PRIMARY KEY option is not matched.(cid = 1), "
                                    "argv[INDEX_PRIMARY_KEY] = 1",
                                    SCHEMA_FAULT, RESTORE})));
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, ASecondPlaceInThePrimaryKeyPasses) {
  ExecuteOnStore(
      "CREATE TABLE appinfo(package_id TEXT, app_id TEXT, widget_id TEXT, service_id TEXT, "
      "version TEXT, variables TEXT, extra_data1 TEXT, extra_data2 TEXT, extra_data3 TEXT, "
      "extra_data4 TEXT, PRIMARY KEY(package_id, app_id))");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), Not(HasLog(RESTORE)));
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, AnEleventhColumnLeavesNoTable) {
  MakeTable("extra_data4 TEXT", "extra_data4 TEXT, extra_data5 TEXT DEFAULT ''");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts(
                  {"[Debug] cid = 10",
                   "[Debug] Name is not matched.(cid = 10), argv[INDEX_TYPE] = extra_data5",
                   SCHEMA_FAULT, RESTORE,
                   "[Debug] query =CREATE TABLE IF NOT EXISTS appinfo(package_id TEXT PRIMARY KEY, "
                   "app_id TEXT, widget_id TEXT, service_id TEXT, version TEXT, variables TEXT, "
                   "extra_data1 TEXT, extra_data2 TEXT, extra_data3 TEXT, extra_data4 TEXT,  );",
                   "[ERROR] fail to sqlite3_exec - error:1 "})));
  EXPECT_EQ(ReadFile(StorePath()), "");
  ExpectRefusing(db);
}

/// Runs the steps in a separate process, with the current values of the daemon's statics.
void RunElsewhere(const std::function<void()>& steps) {
  const pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    steps();
    _exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  ASSERT_EQ(status, 0);
}

TEST_F(AppInfoDBFile, TheStartAfterAnEleventhColumnFindsTheFileEmptyAndRestoresIt) {
  MakeTable("extra_data4 TEXT", "extra_data4 TEXT, extra_data5 TEXT DEFAULT ''");
  RunElsewhere([] {
    AppInfoDB first;
    first.OpenDB();
    ExpectRefusing(first);
  });
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] Start", "[Debug] length = 0", RESTORE, CREATE_QUERY));
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, ATableWithoutItsLastColumnRefusesAllButDeletes) {
  ExecuteOnStore(
      "CREATE TABLE appinfo(package_id TEXT PRIMARY KEY, app_id TEXT, widget_id TEXT, service_id "
      "TEXT, version TEXT, variables TEXT, extra_data1 TEXT, extra_data2 TEXT, extra_data3 TEXT)");
  ExecuteOnStore("INSERT INTO appinfo VALUES('a','','','','','null','','','')");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), Not(HasLog(RESTORE)));

  AppInfoDB::RowMap rows;
  EXPECT_FALSE(db.LoadData(rows));
  EXPECT_THAT(fake::LogTexts(6),
              ElementsAre("[ERROR] sqlite3_prepare_v2() failed.(errmsg : no such column: "
                          "extra_data4)"));
  const auto record = records::MakeLayer("b", "a", "1");
  EXPECT_FALSE(db.InsertNewRecord(record.get()));
  EXPECT_FALSE(db.UpdateRecord(record.get()));
  EXPECT_THAT(StoredPackages(), ElementsAre("a"));
  EXPECT_TRUE(db.DeleteRecord("a"));
  EXPECT_THAT(StoredPackages(), IsEmpty());
}

TEST_F(AppInfoDBFile, ATableOfOneColumnPassesTheCheck) {
  ExecuteOnStore("CREATE TABLE appinfo(package_id TEXT PRIMARY KEY)");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), Not(HasLog(RESTORE)));
  AppInfoDB::RowMap rows;
  EXPECT_FALSE(db.LoadData(rows));
  EXPECT_THAT(fake::LogTexts(),
              HasLog("[ERROR] sqlite3_prepare_v2() failed.(errmsg : no such column: app_id)"));
}

TEST_F(AppInfoDBFile, AMissingTableIsMadeAndOtherTablesStay) {
  ExecuteOnStore("CREATE TABLE other(x); INSERT INTO other VALUES('kept')");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(), Not(HasLog(RESTORE)));
  EXPECT_THAT(QueryStore("SELECT x FROM other"), ElementsAre(ElementsAre("kept")));
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, AFailedCreateStatementReplacesTheFile) {
  ExecuteOnStore("CREATE TABLE other(x); CREATE INDEX appinfo ON other(x)");
  AppInfoDB db;
  db.OpenDB();
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({CREATE_QUERY, "[ERROR] fail to sqlite3_exec - error:1 ",
                                    RESTORE, CREATE_QUERY})));
  EXPECT_THAT(QueryStore("SELECT name FROM sqlite_master WHERE name='other'"), IsEmpty());
  ExpectUsable(db);
}

TEST_F(AppInfoDBFile, RemovingTheFileClosesTheDatabase) {
  StoreRow("a", "null\n");
  AppInfoDB db;
  db.OpenDB();
  ASSERT_EQ(records::OpenCount(), 1);
  db.RemoveDBFile();
  EXPECT_FALSE(support::Exists(StorePath()));
  EXPECT_EQ(records::OpenCount(), 0);
  fake::ClearLog();
  ExpectRefusing(db);
  // No database was used.
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
}

// The row callbacks.

int CheckIntegrityRow(const char* text) {
  char* row[] = {const_cast<char*>(text)};
  return AppInfoDB::IntegrityCheckCallBack(nullptr, 1, row, row);
}

TEST_F(AppInfoDBFile, TheIntegrityReportMayBeOfAnyCase) {
  EXPECT_EQ(CheckIntegrityRow("OK"), 0);
  EXPECT_EQ(CheckIntegrityRow("Ok"), 0);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start", "[Debug] DB integrity check OK",
                                            "[Info] start", "[Debug] DB integrity check OK"));
}

TEST_F(AppInfoDBFile, AnyOtherIntegrityReportAborts) {
  EXPECT_EQ(CheckIntegrityRow("ok "), 1);
  EXPECT_EQ(CheckIntegrityRow(""), 1);
  EXPECT_EQ(CheckIntegrityRow(nullptr), 1);
  EXPECT_EQ(AppInfoDB::IntegrityCheckCallBack(nullptr, 0, nullptr, nullptr), 1);
  EXPECT_THAT(fake::LogTexts(6), testing::SizeIs(4));
}

int CheckSchemaRow(std::vector<const char*> row) {
  return AppInfoDB::SchemaCheckCallback(nullptr, static_cast<int>(row.size()),
                                        const_cast<char**>(row.data()), nullptr);
}

TEST_F(AppInfoDBFile, ASchemaRowOfFewerThanSixColumnsAbortsSilently) {
  EXPECT_EQ(CheckSchemaRow({"1", "app_id", "TEXT", "0", nullptr}), 1);
  EXPECT_EQ(CheckSchemaRow({nullptr, "app_id", "TEXT", "0", nullptr, "0"}), 1);
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(AppInfoDBFile, AFullSchemaRowPasses) {
  EXPECT_EQ(CheckSchemaRow({"1", "app_id", "TEXT", "0", nullptr, "0"}), 0);
  EXPECT_EQ(CheckSchemaRow({"0", "package_id", "TEXT PRIMARY KEY", "0", nullptr, "1"}), 0);
  EXPECT_EQ(CheckSchemaRow({"0", "package_id", "TEXT", "0", nullptr, "2"}), 0);
  EXPECT_EQ(CheckSchemaRow({"1", "app_id", "TEXT", "0", nullptr, "2"}), 0);
}

TEST_F(AppInfoDBFile, AbsentTextsOfASchemaRowAreLoggedAsNull) {
  EXPECT_EQ(CheckSchemaRow({"1", nullptr, "TEXT", "0", nullptr, "0"}), 1);
  EXPECT_EQ(CheckSchemaRow({"1", "app_id", nullptr, "0", nullptr, "0"}), 1);
  EXPECT_EQ(CheckSchemaRow({"1", "app_id", "TEXT", "0", nullptr, nullptr}), 1);
  EXPECT_EQ(CheckSchemaRow({"0", "package_id", "TEXT", "0", nullptr, nullptr}), 1);
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] cid = 1",
                          "[Debug] Name is not matched.(cid = 1), argv[INDEX_TYPE] = NULL",
                          "[Debug] cid = 1",
                          "[Debug] Type is not matched.(cid = 1), argv[INDEX_TYPE] = NULL",
                          "[Debug] cid = 1",
                          "[Debug] PRIMARY KEY option is not matched.(cid = 1), "
                          "argv[INDEX_PRIMARY_KEY] = NULL",
                          "[Debug] cid = 0",
                          "[Debug] PRIMARY KEY option is not matched.(cid = 0), "
                          "argv[INDEX_PRIMARY_KEY] = NULL"));
}

TEST_F(AppInfoDBFile, AnUnexpectedPrimaryKeyIsRefused) {
  EXPECT_EQ(CheckSchemaRow({"1", "app_id", "TEXT", "0", nullptr, "1"}), 1);
  EXPECT_EQ(CheckSchemaRow({"0", "package_id", "TEXT", "0", nullptr, "0"}), 1);
}

TEST_F(AppInfoDBFile, AnUnknownIndexStaysInTheSchema) {
  EXPECT_EQ(CheckSchemaRow({"10", "extra_data5", "TEXT", "0", nullptr, "0"}), 1);
  const auto record = records::MakeLayer("pkg", "a", "1");
  std::vector<std::string> values;
  AppInfoDB().GetColumnValues(*record, values);
  EXPECT_EQ(values.size(), 11u);
}

}  // namespace
