// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/AppInfoDB.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "common/JsonText.h"
#include "fake/control/log.h"
#include "support/log_matchers.h"
#include "unit/app_info/records.h"

/// The statements on an open store, and which parts of a record are stored in its row.
namespace {

using records::ExecuteOnStore;
using records::Info;
using records::Layer;
using records::MakeLayer;
using records::MakeRecord;
using records::Owned;
using records::QueryStore;
using records::StoredPackages;
using records::StoreRow;
using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class AppInfoDBTest : public testing::Test {
 protected:
  void SetUp() override {
    records::MakeStoreDirectory();
    m_db.OpenDB();
    fake::ClearLog();
  }
  void TearDown() override { records::ExpectLevelsFitTheirWords(); }

  std::vector<std::string> Values(const AppInfo& record) {
    std::vector<std::string> values;
    m_db.GetColumnValues(record, values);
    return values;
  }
  AppInfoDB::RowMap Load() {
    AppInfoDB::RowMap rows;
    EXPECT_TRUE(m_db.LoadData(rows));
    return rows;
  }

  AppInfoDB m_db;
};

Owned<AppInfo> MakeFeeder(const std::string& package) {
  auto layer = MakeLayer(package, "ch_feeder_standard", "extended", {"channel_data_url"});
  layer->SetMetadata("orv_data", {"channel_data_url", "http://x/ch"}, false);
  return Owned<AppInfo>(layer.release());
}

constexpr char FEEDER_VARIABLES[] =
    "{\"orv_data\":{\"channel_data_url\":\"http://x/ch\"},"
    "\"orv_type\":{\"ch_feeder_standard\":\"extended\"}}\n";

// The contents of a row.

TEST_F(AppInfoDBTest, ARecordIsOneTextPerColumn) {
  EXPECT_THAT(Values(*MakeFeeder("pkg")), ElementsAre("pkg", "pkg.app", "pkg-widget", "pkg.service",
                                                      "1.2.3", FEEDER_VARIABLES, "", "", "", ""));
}

TEST_F(AppInfoDBTest, AnEmptyWidgetIdIsAnEmptyColumnAndTheRowIsWritten) {
  const auto record = MakeFeeder("pkg");
  record->m_sWidgetID.clear();
  EXPECT_EQ(Values(*record)[2], "");
  EXPECT_TRUE(m_db.InsertNewRecord(record.get()));
  EXPECT_THAT(QueryStore("SELECT widget_id FROM appinfo"), ElementsAre(ElementsAre("")));
}

TEST_F(AppInfoDBTest, TheReservedColumnsAreEmptyTextAndNeverNull) {
  m_db.InsertNewRecord(MakeFeeder("pkg").get());
  EXPECT_THAT(
      QueryStore("SELECT typeof(extra_data1), extra_data1, typeof(extra_data2), extra_data2, "
                 "typeof(extra_data3), extra_data3, typeof(extra_data4), extra_data4 FROM appinfo"),
      ElementsAre(ElementsAre("text", "", "text", "", "text", "", "text", "")));
}

TEST_F(AppInfoDBTest, ARecordWithoutDataHasOnlyItsTypes) {
  EXPECT_EQ(Values(*MakeLayer("pkg", "custom_ui_standard", "info"))[5],
            "{\"orv_type\":{\"custom_ui_standard\":\"info\"}}\n");
}

TEST_F(AppInfoDBTest, ABareRecordsVariablesAreNull) {
  EXPECT_EQ(Values(*MakeRecord(Info("pkg")))[5], "null\n");
}

TEST_F(AppInfoDBTest, VariablesHoldTheUnionOfAllLayersAndTheInnermostValueOfAKey) {
  auto* inner = new Layer(new ORVAppInfo(Info("pkg")), "b", "2", {"key", "inner"});
  inner->SetMetadata("orv_data", {"key", "of b"}, false);
  const Owned<AppInfo> record(new Layer(inner, "a", "1", {"key", "outer"}));
  EXPECT_EQ(Values(*record)[5],
            "{\"orv_data\":{\"inner\":\"\",\"key\":\"of b\",\"outer\":\"\"},"
            "\"orv_type\":{\"a\":\"1\",\"b\":\"2\"}}\n");
}

TEST_F(AppInfoDBTest, TheIdentityOfARowIsTheOutermostLayers) {
  const auto record = MakeFeeder("pkg");
  record->m_sPackageID = "other";
  record->m_sWidgetID = "w";
  m_db.InsertNewRecord(record.get());
  EXPECT_THAT(QueryStore("SELECT package_id, app_id, widget_id FROM appinfo"),
              ElementsAre(ElementsAre("other", "pkg.app", "w")));
}

// Insert.

TEST_F(AppInfoDBTest, AnInsertWritesTheRow) {
  EXPECT_TRUE(m_db.InsertNewRecord(MakeFeeder("pkg").get()));
  EXPECT_THAT(QueryStore("SELECT * FROM appinfo"),
              ElementsAre(ElementsAre("pkg", "pkg.app", "pkg-widget", "pkg.service", "1.2.3",
                                      FEEDER_VARIABLES, "", "", "", "")));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start"));
}

TEST_F(AppInfoDBTest, AnInsertOverARowStoresTheRecordAndReportsFailure) {
  StoreRow("pkg", "old");
  EXPECT_FALSE(m_db.InsertNewRecord(MakeFeeder("pkg").get()));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] start", "[Info] start", "[ERROR] insert error."));
  EXPECT_THAT(QueryStore("SELECT variables FROM appinfo"),
              ElementsAre(ElementsAre(FEEDER_VARIABLES)));
}

TEST_F(AppInfoDBTest, AValueWithASingleQuoteIsNotStoredAndTakesTheOldRowAlong) {
  StoreRow("pkg", "old");
  StoreRow("other", "old");
  const auto record = MakeFeeder("pkg");
  record->SetMetadata("orv_data", {"channel_data_url", "it's"}, false);
  EXPECT_FALSE(m_db.InsertNewRecord(record.get()));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] start", "[Info] start", "[ERROR] insert error."));
  EXPECT_THAT(StoredPackages(), ElementsAre("other"));
}

TEST_F(AppInfoDBTest, APackageIdWithASingleQuoteCannotEvenBeDeleted) {
  const auto record = MakeFeeder("it's");
  EXPECT_FALSE(m_db.InsertNewRecord(record.get()));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start", "[Info] start", "[ERROR] delete error.",
                                            "[ERROR] insert error."));
  EXPECT_THAT(StoredPackages(), IsEmpty());
}

/// Texts that would change a statement without escaping.
const std::vector<std::string> INJECTIONS = {
    "x','','','',''); DELETE FROM appinfo; --", "x'; DROP TABLE appinfo; --",
    "x' || (SELECT package_id FROM appinfo) || '", "1''2", "'"};

TEST_F(AppInfoDBTest, NoSqlInAnyValueReachesTheStore) {
  for (const std::string& text : INJECTIONS) {
    for (const auto member : {&AppInfo::m_sAppID, &AppInfo::m_sWidgetID, &AppInfo::m_sServiceID,
                              &AppInfo::m_sVersion}) {
      StoreRow("pkg", "old");
      StoreRow("other", "old");
      const auto record = MakeFeeder("pkg");
      (*record).*member = text;
      fake::ClearLog();
      EXPECT_FALSE(m_db.UpdateRecord(record.get())) << text;
      EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start", "[ERROR] update error."));
      EXPECT_THAT(StoredPackages(), ElementsAre("other", "pkg")) << text;
      fake::ClearLog();
      EXPECT_FALSE(m_db.InsertNewRecord(record.get())) << text;
      EXPECT_THAT(fake::LogTexts(),
                  ElementsAre("[Info] start", "[Info] start", "[ERROR] insert error."));
      EXPECT_THAT(StoredPackages(), ElementsAre("other")) << text;
      ExecuteOnStore("DELETE FROM appinfo");
    }
  }
}

TEST_F(AppInfoDBTest, NoSqlInMetadataReachesTheStore) {
  for (const std::string& text : INJECTIONS) {
    StoreRow("other", "old");
    const auto record = MakeFeeder("pkg");
    record->SetMetadata("orv_data", {"channel_data_url", text}, false);
    EXPECT_FALSE(m_db.InsertNewRecord(record.get())) << text;
    EXPECT_FALSE(m_db.UpdateRecord(record.get())) << text;
    EXPECT_THAT(StoredPackages(), ElementsAre("other")) << text;
    ExecuteOnStore("DELETE FROM appinfo");
  }
}

TEST_F(AppInfoDBTest, NoSqlInAPackageIdReachesTheStore) {
  for (const std::string& text : INJECTIONS) {
    StoreRow("other", "old");
    const auto record = MakeFeeder(text);
    EXPECT_FALSE(m_db.InsertNewRecord(record.get())) << text;
    EXPECT_FALSE(m_db.UpdateRecord(record.get())) << text;
    EXPECT_FALSE(m_db.DeleteRecord(text)) << text;
    EXPECT_FALSE(m_db.DeleteRecord("x' OR '1'='1")) << text;
    EXPECT_THAT(StoredPackages(), ElementsAre("other")) << text;
    ExecuteOnStore("DELETE FROM appinfo");
  }
}

TEST_F(AppInfoDBTest, AStatementWithoutMemoryForItsTextIsAFailure) {
  StoreRow("pkg", "old");
  const auto record = MakeFeeder("pkg");
  sqlite3_hard_heap_limit64(1);
  EXPECT_FALSE(m_db.UpdateRecord(record.get()));
  EXPECT_FALSE(m_db.DeleteRecord("pkg"));
  EXPECT_FALSE(m_db.InsertNewRecord(record.get()));
  sqlite3_hard_heap_limit64(0);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start", "[ERROR] update error.", "[Info] start",
                                            "[ERROR] delete error.", "[Info] start", "[Info] start",
                                            "[ERROR] delete error.", "[ERROR] insert error."));
  EXPECT_THAT(QueryStore("SELECT variables FROM appinfo"), ElementsAre(ElementsAre("old")));
}

TEST_F(AppInfoDBTest, AnyOtherByteOfAnIdentityReachesTheRow) {
  const auto record = MakeFeeder("pkg");
  record->m_sVersion = "%s%n%q \"double\" back\\slash\nline;-- \xc3\xa4\xff\x80";
  EXPECT_TRUE(m_db.InsertNewRecord(record.get()));
  EXPECT_EQ(Load()["pkg"]["version"], record->m_sVersion);
}

TEST_F(AppInfoDBTest, AnInsertFailsWhileAnotherHoldsTheFile) {
  records::Connection other;
  other.Execute("BEGIN EXCLUSIVE");
  EXPECT_FALSE(m_db.InsertNewRecord(MakeFeeder("pkg").get()));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start", "[Info] start", "[ERROR] delete error.",
                                            "[ERROR] insert error."));
  other.Execute("COMMIT");
  EXPECT_THAT(StoredPackages(), IsEmpty());
}

// Update.

TEST_F(AppInfoDBTest, AnUpdateSetsEveryColumn) {
  StoreRow("pkg", "old");
  StoreRow("other", "old");
  ExecuteOnStore("UPDATE appinfo SET extra_data3='x'");
  const auto record = MakeFeeder("pkg");
  record->m_sVersion = "2.0.0";
  record->m_sWidgetID = "new widget";
  EXPECT_TRUE(m_db.UpdateRecord(record.get()));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start"));
  EXPECT_THAT(QueryStore("SELECT * FROM appinfo WHERE package_id='pkg'"),
              ElementsAre(ElementsAre("pkg", "pkg.app", "new widget", "pkg.service", "2.0.0",
                                      FEEDER_VARIABLES, "", "", "", "")));
  EXPECT_THAT(QueryStore("SELECT variables, extra_data3 FROM appinfo WHERE package_id='other'"),
              ElementsAre(ElementsAre("old", "x")));
}

TEST_F(AppInfoDBTest, AnUpdateThatMatchesNoRowIsASuccess) {
  EXPECT_TRUE(m_db.UpdateRecord(MakeFeeder("pkg").get()));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
}

TEST_F(AppInfoDBTest, AnUpdateWithASingleQuoteFailsAndLeavesTheRow) {
  StoreRow("pkg", "old");
  const auto record = MakeFeeder("pkg");
  record->m_sVersion = "it's";
  EXPECT_FALSE(m_db.UpdateRecord(record.get()));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start", "[ERROR] update error."));
  EXPECT_THAT(QueryStore("SELECT variables FROM appinfo"), ElementsAre(ElementsAre("old")));
}

// Delete.

TEST_F(AppInfoDBTest, ADeleteTakesItsRowOnly) {
  StoreRow("a", "null");
  StoreRow("b", "null");
  EXPECT_TRUE(m_db.DeleteRecord("a"));
  EXPECT_THAT(StoredPackages(), ElementsAre("b"));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start"));
}

TEST_F(AppInfoDBTest, ADeleteWithoutARowIsASuccess) {
  StoreRow("a", "null");
  EXPECT_TRUE(m_db.DeleteRecord("b"));
  EXPECT_TRUE(m_db.DeleteRecord(""));
  EXPECT_THAT(StoredPackages(), ElementsAre("a"));
}

TEST_F(AppInfoDBTest, ADeleteWithASingleQuoteFails) {
  EXPECT_FALSE(m_db.DeleteRecord("it's"));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start", "[ERROR] delete error."));
}

// Load.

TEST_F(AppInfoDBTest, AllRowsAreLoadedByPackageIdWithEveryColumn) {
  StoreRow("b", "vb");
  StoreRow("a", "va");
  const AppInfoDB::RowMap rows = Load();
  EXPECT_THAT(rows, SizeIs(2));
  EXPECT_THAT(rows.at("a"),
              ElementsAre(Pair("app_id", "a.app"), Pair("extra_data1", ""), Pair("extra_data2", ""),
                          Pair("extra_data3", ""), Pair("extra_data4", ""), Pair("package_id", "a"),
                          Pair("service_id", "a.service"), Pair("variables", "va"),
                          Pair("version", "1.2.3"), Pair("widget_id", "a-widget")));
  EXPECT_EQ(rows.at("b").at("variables"), "vb");
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Info] start",
                  "[Debug] query =SELECT package_id, app_id, widget_id, service_id, version, "
                  "variables, extra_data1, extra_data2, extra_data3, extra_data4 FROM appinfo"));
}

TEST_F(AppInfoDBTest, LoadingReplacesWhatWasThere) {
  AppInfoDB::RowMap rows = {{"stale", {{"package_id", "stale"}}}};
  EXPECT_TRUE(m_db.LoadData(rows));
  EXPECT_THAT(rows, IsEmpty());
}

TEST_F(AppInfoDBTest, ANullColumnLoadsAsAnEmptyText) {
  ExecuteOnStore("INSERT INTO appinfo(package_id) VALUES('a')");
  const AppInfoDB::RowMap rows = Load();
  EXPECT_EQ(rows.at("a").at("variables"), "");
  EXPECT_THAT(rows.at("a"), SizeIs(10));
}

TEST_F(AppInfoDBTest, ARowWithoutAPackageIdIsDropped) {
  ExecuteOnStore("INSERT INTO appinfo(package_id, app_id) VALUES('', 'x'), (NULL, 'y')");
  StoreRow("a", "null");
  const AppInfoDB::RowMap rows = Load();
  EXPECT_THAT(rows, SizeIs(1));
  EXPECT_EQ(rows.count("a"), 1u);
}

TEST_F(AppInfoDBTest, AReadingThatBreaksOffIsASuccess) {
  StoreRow("a", "null");
  Load();
  records::Connection other;
  other.Execute("BEGIN EXCLUSIVE");
  EXPECT_THAT(Load(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
}

TEST_F(AppInfoDBTest, AReadingOfAVanishedTableBreaksOffToo) {
  ExecuteOnStore("DROP TABLE appinfo");
  AppInfoDB::RowMap rows = {{"stale", {}}};
  EXPECT_TRUE(m_db.LoadData(rows));
  EXPECT_THAT(rows, IsEmpty());
  EXPECT_FALSE(m_db.InsertNewRecord(MakeFeeder("pkg").get()));
}

TEST_F(AppInfoDBTest, WhatWasWrittenIsReadBackByteForByte) {
  const auto record = MakeFeeder("pkg");
  const std::string value = "\"quoted\"\nline\ttab \\ \xc3\xa4\xe2\x82\xac\xf0\x9f\x93\xba %s";
  record->SetMetadata("orv_data", {"channel_data_url", value}, false);
  ASSERT_TRUE(m_db.InsertNewRecord(record.get()));
  Json::Value root;
  ASSERT_TRUE(JsonText::Parse(Load()["pkg"]["variables"], root));
  EXPECT_EQ(root["orv_data"]["channel_data_url"].asString(), value);
}

TEST_F(AppInfoDBTest, TenThousandEntriesSurvive) {
  std::vector<std::string> keys;
  for (int i = 0; i < 10000; ++i) {
    keys.push_back("key " + std::to_string(i) + " \"\xc3\xa4\"\n");
  }
  const auto record = MakeLayer("pkg", "a", "1", keys);
  for (const std::string& key : keys) {
    record->SetMetadata("orv_data", {key, "value of " + key + "\"\\\xf0\x9f\x93\xba"}, false);
  }
  const std::string longText(64 * 1024, '\x7e');
  record->SetMetadata("orv_data", {keys[5000], longText}, false);
  ASSERT_TRUE(m_db.InsertNewRecord(record.get()));
  ASSERT_TRUE(m_db.UpdateRecord(record.get()));

  Json::Value root;
  ASSERT_TRUE(JsonText::Parse(Load()["pkg"]["variables"], root));
  EXPECT_EQ(root["orv_data"].size(), 10000u);
  for (const std::string& key : keys) {
    ASSERT_EQ(root["orv_data"][key].asString(), record->GetMetadata("orv_data", key));
  }
  EXPECT_EQ(root["orv_data"][keys[5000]].asString(), longText);
}

// Without a database.

TEST(AppInfoDB, WithoutADatabaseEveryStatementIsAFalse) {
  AppInfoDB db;
  const auto record = MakeFeeder("pkg");
  fake::ClearLog();
  EXPECT_FALSE(db.InsertNewRecord(record.get()));
  EXPECT_FALSE(db.UpdateRecord(record.get()));
  EXPECT_FALSE(db.DeleteRecord("pkg"));
  AppInfoDB::RowMap rows = {{"kept", {}}};
  EXPECT_FALSE(db.LoadData(rows));
  EXPECT_THAT(rows, SizeIs(1));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] start", "[Info] start", "[Info] start", "[Info] start"));
}

TEST(AppInfoDB, TheDestructorLetsGoOfTheFile) {
  records::MakeStoreDirectory();
  {
    AppInfoDB db;
    db.OpenDB();
    ASSERT_EQ(records::OpenCount(), 1);
  }
  EXPECT_EQ(records::OpenCount(), 0);
}

}  // namespace
