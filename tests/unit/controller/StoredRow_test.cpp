// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/StoredRow.h"

#include "unit/controller/creator_fixture.h"

/// How the store's rows become records again.
namespace {

using records::QueryStore;
using records::StoredPackages;
using records::StoreRow;
using support::HasLog;
using support::HasLogsInOrder;
using support::HasLogTimes;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char OTHER[] = "other";
constexpr char SECOND[] = "second";
constexpr char GOOD[] = "{\"orv_data\":{\"key\":\"v\"},\"orv_type\":{\"other\":\"1\"}}\n";
constexpr char CAUGHT[] = "[Debug] Exception Caught.";

class LoadTest : public CreatorTest {
 protected:
  /// Call this when the rows are stored.
  void Load() {
    RegisterLayer<OTHER>();
    RegisterLayer<SECOND>();
    Forget();
    Creator().LoadAndCreateAppInfo();
  }
};

TEST_F(LoadTest, ARecordComesBackAsItWas) {
  StoreRow("pkg",
           "{\"orv_data\":{\"key\":\"v\",\"stranger\":\"x\"},"
           "\"orv_type\":{\"other\":\"1\",\"second\":\"2\"}}\n");
  Load();
  AppInfo* record = Find("pkg");
  ASSERT_NE(record, nullptr);
  EXPECT_EQ(record->m_sPackageID, "pkg");
  EXPECT_EQ(record->m_sAppID, "pkg.app");
  EXPECT_EQ(record->m_sWidgetID, "pkg-widget");
  EXPECT_EQ(record->m_sServiceID, "pkg.service");
  EXPECT_EQ(record->m_sVersion, "1.2.3");
  EXPECT_EQ(record->GetMetadata("orv_type", "other"), "1");
  EXPECT_EQ(record->GetMetadata("orv_type", "second"), "2");
  EXPECT_EQ(record->GetMetadata("orv_data", "key"), "v");
  EXPECT_EQ(record->GetMetadata("orv_data", "stranger"), "");
  EXPECT_THAT(Made<OTHER>::s_layer->StagedType(), testing::Pair("other", ""));
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("second", "other", "orv_app"));
}

TEST_F(LoadTest, LoadingRunsNothingWritesNothingAndAsksNobody) {
  StoreRow("pkg", "  " + std::string(GOOD));
  Load();
  EXPECT_THAT(Cached(), ElementsAre("pkg"));
  EXPECT_THAT(records::Journal(), IsEmpty());
  EXPECT_THAT(fake::CallNames(), IsEmpty());
  EXPECT_THAT(QueryStore("SELECT variables FROM appinfo"),
              ElementsAre(ElementsAre("  " + std::string(GOOD))));
}

TEST_F(LoadTest, RowsAreLoadedInAscendingOrder) {
  StoreRow("c", GOOD);
  StoreRow("a", GOOD);
  StoreRow("b", GOOD);
  Load();
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] Target PackageID : a", "[Info] Target PackageID : b",
                                    "[Info] Target PackageID : c"})));
  EXPECT_THAT(Cached(), ElementsAre("a", "b", "c"));
}

TEST_F(LoadTest, AnEmptyStoreLoadsNothing) {
  Load();
  EXPECT_THAT(Cached(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
}

TEST_F(LoadTest, AnUnusableStoreIsAnErrorAndAnEmptyCache) {
  records::ExecuteOnStore("CREATE TABLE appinfo(package_id TEXT PRIMARY KEY)");
  Load();
  EXPECT_THAT(fake::LogTexts(6),
              ElementsAre("[ERROR] sqlite3_prepare_v2() failed.(errmsg : no such column: app_id)",
                          "[ERROR] Cannot load the stored data."));
  EXPECT_THAT(Cached(), IsEmpty());
}

TEST_F(LoadTest, ABrokenRowEndsTheLoadAndLeavesTheRows) {
  StoreRow("a", GOOD);
  StoreRow("b", "{broken");
  StoreRow("c", GOOD);
  Load();
  EXPECT_THAT(Cached(), ElementsAre("a"));
  EXPECT_THAT(fake::LogTexts(), HasLogTimes("[Debug] Invalid Json Str : {broken", 1));
  EXPECT_THAT(StoredPackages(), ElementsAre("a", "b", "c"));
}

TEST_F(LoadTest, EmptyVariablesEndTheLoad) {
  StoreRow("a", "");
  StoreRow("b", GOOD);
  Load();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] Invalid Json Str : "));
  EXPECT_THAT(Cached(), IsEmpty());
}

TEST_F(LoadTest, NullVariablesOfTheStoreEndTheLoad) {
  records::ExecuteOnStore(records::CREATE_TABLE);
  records::ExecuteOnStore("INSERT INTO appinfo(package_id) VALUES('a')");
  Load();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] Invalid Json Str : "));
}

TEST_F(LoadTest, TheWordNullMakesNoRecordAndTheLoadGoesOn) {
  StoreRow("a", "null");
  StoreRow("b", GOOD);
  Load();
  EXPECT_THAT(fake::LogTexts(), HasLogsInOrder(Texts({"[Info] Target PackageID : a",
                                                      "[ERROR] Cannot create app instance.",
                                                      "[Info] Target PackageID : b"})));
  EXPECT_THAT(Cached(), ElementsAre("b"));
}

TEST_F(LoadTest, AValueThatIsAnObjectEndsTheLoad) {
  StoreRow("a", GOOD);
  StoreRow("b", "{\"orv_type\":{\"other\":{}}}");
  StoreRow("c", GOOD);
  Load();
  EXPECT_THAT(Cached(), ElementsAre("a"));
  EXPECT_THAT(fake::LogTexts(), HasLogTimes(CAUGHT, 1));
}

TEST_F(LoadTest, ACategoryThatIsNoObjectEndsTheLoad) {
  StoreRow("a", "{\"orv_type\":\"other\"}");
  StoreRow("b", GOOD);
  Load();
  EXPECT_THAT(Cached(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), HasLog(CAUGHT));
}

TEST_F(LoadTest, ARootThatIsNoObjectEndsTheLoad) {
  StoreRow("a", "[\"orv_type\"]");
  StoreRow("b", GOOD);
  Load();
  EXPECT_THAT(Cached(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), HasLog(CAUGHT));
}

TEST_F(LoadTest, NestingWithoutEndEndsTheLoad) {
  StoreRow("a", std::string(100000, '['));
  StoreRow("b", GOOD);
  Load();
  EXPECT_THAT(Cached(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), HasLog(CAUGHT));
}

TEST_F(LoadTest, PlainValuesBecomeTheirText) {
  StoreRow("pkg", "{\"orv_data\":{\"key\":true},\"orv_type\":{\"other\":7,\"second\":null}}");
  Load();
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_type", "other"), "7");
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_type", "second"), "");
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_data", "key"), "true");
}

TEST_F(LoadTest, CommentsAndOtherCategoriesArePassedOver) {
  StoreRow("pkg", "/* by hand */ {\"orv_type\":{\"other\":\"1\"},\"more\":{\"key\":\"x\"}}");
  Load();
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_type", "other"), "1");
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_data", "key"), "");
}

TEST_F(LoadTest, AStoredTypeThatNobodyRegisteredIsSkipped) {
  StoreRow("a", "{\"orv_type\":{\"stranger\":\"1\"}}");
  StoreRow("b", "{\"orv_type\":{\"other\":\"1\",\"stranger\":\"1\"}}");
  Load();
  EXPECT_THAT(Cached(), ElementsAre("b"));
  EXPECT_THAT(TakeApart("b"), ElementsAre("other", "orv_app"));
}

TEST_F(LoadTest, TheMetadataOfALoadedPackageIsStillUnseen) {
  StoreRow("pkg", GOOD);
  Load();
  fake::AddPackage(MakePackage("pkg", {{TypeKey("other"), "changed"}}));
  EXPECT_EQ(Creator().UpdateApp("pkg"), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Made<OTHER>::s_layer->StagedType(), testing::Pair("other", "changed"));
}

TEST_F(LoadTest, WhatWasInstalledComesBackAfterARestart) {
  RegisterLayer<OTHER>();
  const std::string value = "\"quoted\"\n\\ \xc3\xa4\xf0\x9f\x93\xba" + std::string(64 * 1024, 'x');
  fake::AddPackage(MakePackage("pkg", {{TypeKey("other"), value}, {DataKey("key"), value}}));
  ASSERT_TRUE(Creator().CreateApp("pkg"));
  const records::Owned<AppInfo> first(Find("pkg"));
  Creator().LoadAndCreateAppInfo();
  ASSERT_NE(Find("pkg"), first.get());
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_type", "other"), value);
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_data", "key"), value);
}

TEST_F(LoadTest, AThousandRowsAreLoaded) {
  records::Connection connection;
  connection.Execute(records::CREATE_TABLE);
  connection.Execute("BEGIN");
  for (int i = 0; i < 1000; ++i) {
    connection.Execute("INSERT INTO appinfo(package_id, variables) VALUES('p" + std::to_string(i) +
                       "', '" + GOOD + "')");
  }
  connection.Execute("COMMIT");
  Load();
  EXPECT_EQ(Cached().size(), 1000u);
}

}  // namespace
