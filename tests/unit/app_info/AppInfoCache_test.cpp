// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/AppInfoCache.h"

#include <gmock/gmock.h>

#include <thread>

#include "fake/control/log.h"
#include "support/log_matchers.h"
#include "unit/app_info/records.h"

namespace {

using records::Journal;
using records::Layer;
using records::MakeLayer;
using records::Owned;
using records::QueryStore;
using records::StoredPackages;
using records::StoreRow;
using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

constexpr char INSERT_FAILED[] = "[ERROR] AppInfoDB::InsertNewRecord() return false.";

class AppInfoCacheTest : public testing::Test {
 protected:
  void TearDown() override { records::ExpectLevelsFitTheirWords(); }
  void Open() {
    records::MakeStoreDirectory();
    m_cache.OpenDB();
    fake::ClearLog();
  }
  std::vector<std::string> IDs() {
    std::vector<std::string> ids;
    m_cache.GetAppIDList(ids);
    return ids;
  }

  AppInfoCache& m_cache = *AppInfoCache::GetInstance();
};

Owned<Layer> MakeApp(const std::string& package) {
  return MakeLayer(package, "a", "1", {"key"});
}

TEST_F(AppInfoCacheTest, ThereIsOneInstance) {
  EXPECT_EQ(AppInfoCache::GetInstance(), AppInfoCache::GetInstance());
}

// Add.

TEST_F(AppInfoCacheTest, AnAddedRecordIsFoundAndStored) {
  Open();
  const auto record = MakeApp("pkg");
  EXPECT_TRUE(m_cache.AddAppInfo("pkg", record.get(), true));
  EXPECT_EQ(m_cache.GetAppInfo("pkg"), record.get());
  EXPECT_THAT(StoredPackages(), ElementsAre("pkg"));
}

TEST_F(AppInfoCacheTest, AnAddWithoutTheStoreWritesNoRow) {
  Open();
  const auto record = MakeApp("pkg");
  EXPECT_TRUE(m_cache.AddAppInfo("pkg", record.get(), false));
  EXPECT_EQ(m_cache.GetAppInfo("pkg"), record.get());
  EXPECT_THAT(StoredPackages(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(AppInfoCacheTest, AnAddOverARecordReplacesThePointerAndFreesNothing) {
  Open();
  const auto first = MakeApp("pkg");
  const auto second = MakeApp("pkg");
  m_cache.AddAppInfo("pkg", first.get(), false);
  EXPECT_TRUE(m_cache.AddAppInfo("pkg", second.get(), false));
  EXPECT_EQ(m_cache.GetAppInfo("pkg"), second.get());
  EXPECT_THAT(Journal(), IsEmpty());
  EXPECT_THAT(IDs(), ElementsAre("pkg"));
}

TEST_F(AppInfoCacheTest, AnAddOverARowSucceedsAtItsSecondInsert) {
  Open();
  StoreRow("pkg", "old");
  const auto record = MakeApp("pkg");
  EXPECT_TRUE(m_cache.AddAppInfo("pkg", record.get(), true));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] start", "[Info] start", "[ERROR] insert error.",
                                            // repeated by the cache
                                            "[Info] start", "[Info] start"));
  EXPECT_THAT(
      QueryStore("SELECT variables FROM appinfo"),
      ElementsAre(ElementsAre("{\"orv_data\":{\"key\":\"\"},\"orv_type\":{\"a\":\"1\"}}\n")));
}

TEST_F(AppInfoCacheTest, AValueWithASingleQuoteIsInTheCacheAndHasNoRow) {
  Open();
  StoreRow("pkg", "old");
  const auto record = MakeApp("pkg");
  record->SetMetadata("orv_data", {"key", "it's"}, false);
  EXPECT_FALSE(m_cache.AddAppInfo("pkg", record.get(), true));
  EXPECT_EQ(m_cache.GetAppInfo("pkg"), record.get());
  EXPECT_THAT(StoredPackages(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] start", "[Info] start", "[ERROR] insert error.", "[Info] start",
                          "[Info] start", "[Info] start", "[ERROR] insert error.", INSERT_FAILED));
}

TEST_F(AppInfoCacheTest, AnAddWithoutADatabaseStaysInTheCache) {
  const auto record = MakeApp("pkg");
  EXPECT_FALSE(m_cache.AddAppInfo("pkg", record.get(), true));
  EXPECT_EQ(m_cache.GetAppInfo("pkg"), record.get());
  EXPECT_THAT(fake::LogTexts(6), ElementsAre(INSERT_FAILED));
}

// Update.

TEST_F(AppInfoCacheTest, AnUpdateReplacesThePointerAndRewritesTheRow) {
  Open();
  const auto first = MakeApp("pkg");
  m_cache.AddAppInfo("pkg", first.get(), true);
  const auto second = MakeApp("pkg");
  second->m_sWidgetID = "new";
  EXPECT_TRUE(m_cache.UpdateAppInfo("pkg", second.get()));
  EXPECT_EQ(m_cache.GetAppInfo("pkg"), second.get());
  EXPECT_THAT(Journal(), IsEmpty());
  EXPECT_THAT(QueryStore("SELECT widget_id FROM appinfo"), ElementsAre(ElementsAre("new")));
}

TEST_F(AppInfoCacheTest, AnUpdateOfAnUnknownPackageIsAnAdd) {
  Open();
  const auto record = MakeApp("pkg");
  EXPECT_TRUE(m_cache.UpdateAppInfo("pkg", record.get()));
  EXPECT_EQ(m_cache.GetAppInfo("pkg"), record.get());
  EXPECT_THAT(StoredPackages(), ElementsAre("pkg"));
}

TEST_F(AppInfoCacheTest, AnUpdateOfARecordWithoutARowIsASuccessThatWritesNone) {
  Open();
  const auto record = MakeApp("pkg");
  m_cache.AddAppInfo("pkg", record.get(), false);
  EXPECT_TRUE(m_cache.UpdateAppInfo("pkg", record.get()));
  EXPECT_THAT(StoredPackages(), IsEmpty());
}

TEST_F(AppInfoCacheTest, AnUpdateThatTheStoreRefusesLosesTheRow) {
  Open();
  const auto record = MakeApp("pkg");
  m_cache.AddAppInfo("pkg", record.get(), true);
  record->m_sVersion = "it's";
  fake::ClearLog();
  EXPECT_FALSE(m_cache.UpdateAppInfo("pkg", record.get()));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] start", "[ERROR] update error.", "[Info] start", "[Info] start",
                          "[Info] start", "[ERROR] insert error.", INSERT_FAILED));
  EXPECT_THAT(StoredPackages(), IsEmpty());
  EXPECT_EQ(m_cache.GetAppInfo("pkg"), record.get());
}

TEST_F(AppInfoCacheTest, AnUpdateWithoutADatabaseTriesDeleteAndInsert) {
  const auto record = MakeApp("pkg");
  m_cache.AddAppInfo("pkg", record.get(), false);
  EXPECT_FALSE(m_cache.UpdateAppInfo("pkg", record.get()));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] start", "[Info] start", "[Info] start", INSERT_FAILED));
}

TEST_F(AppInfoCacheTest, AChangedWidgetIdSurvivesInTheStore) {
  Open();
  const auto record = MakeApp("pkg");
  record->m_sWidgetID.clear();
  m_cache.AddAppInfo("pkg", record.get(), true);
  record->m_sWidgetID = "later";
  m_cache.UpdateAppInfo("pkg", record.get());
  AppInfoDB::RowMap rows;
  ASSERT_TRUE(m_cache.LoadData(rows));
  EXPECT_EQ(rows["pkg"]["widget_id"], "later");
}

// Remove.

TEST_F(AppInfoCacheTest, ARemovedRecordIsHandedOverAndItsRowIsGone) {
  Open();
  const auto record = MakeApp("pkg");
  const auto other = MakeApp("other");
  m_cache.AddAppInfo("pkg", record.get(), true);
  m_cache.AddAppInfo("other", other.get(), true);
  fake::ClearLog();
  EXPECT_EQ(m_cache.RemoveAppInfo("pkg"), record.get());
  EXPECT_EQ(m_cache.GetAppInfo("pkg"), nullptr);
  EXPECT_THAT(StoredPackages(), ElementsAre("other"));
  EXPECT_THAT(Journal(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
}

TEST_F(AppInfoCacheTest, RemovalOfAnUnknownPackageTouchesNoRow) {
  Open();
  StoreRow("pkg", "null");
  EXPECT_EQ(m_cache.RemoveAppInfo("pkg"), nullptr);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] Cannot find target AppInfo."));
  EXPECT_THAT(StoredPackages(), ElementsAre("pkg"));
}

TEST_F(AppInfoCacheTest, ARemovalThatTheStoreRefusesStands) {
  const auto record = MakeApp("pkg");
  m_cache.AddAppInfo("pkg", record.get(), false);
  EXPECT_EQ(m_cache.RemoveAppInfo("pkg"), record.get());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] start", "[ERROR] AppInfoDB::DeleteRecord() return false."));
  EXPECT_THAT(IDs(), IsEmpty());
}

// Find and list.

TEST_F(AppInfoCacheTest, AMissingRecordIsADebugLine) {
  EXPECT_EQ(m_cache.GetAppInfo("pkg"), nullptr);
  EXPECT_THAT(fake::LogTexts(4), ElementsAre("[Debug] Cannot find target AppInfo."));
}

TEST_F(AppInfoCacheTest, TheEmptyPackageIdIsFoundOnlyWhenEntered) {
  EXPECT_EQ(m_cache.GetAppInfo(""), nullptr);
  const auto record = MakeApp("");
  m_cache.AddAppInfo("", record.get(), false);
  EXPECT_EQ(m_cache.GetAppInfo(""), record.get());
}

TEST_F(AppInfoCacheTest, ARecordIsFoundByItsAddressSilently) {
  const auto first = MakeApp("a");
  const auto second = MakeApp("b");
  m_cache.AddAppInfo("a", first.get(), false);
  m_cache.AddAppInfo("b", second.get(), false);
  fake::ClearLog();
  EXPECT_TRUE(m_cache.HasAppInfo(first.get()));
  EXPECT_TRUE(m_cache.HasAppInfo(second.get()));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(AppInfoCacheTest, AnAddressThatNoRecordHasIsNotFoundSilently) {
  const auto replaced = MakeApp("a");
  const auto record = MakeApp("a");
  m_cache.AddAppInfo("a", replaced.get(), false);
  m_cache.AddAppInfo("a", record.get(), false);
  EXPECT_FALSE(m_cache.HasAppInfo(replaced.get()));
  EXPECT_FALSE(m_cache.HasAppInfo(nullptr));
  m_cache.RemoveAppInfo("a");
  fake::ClearLog();
  EXPECT_FALSE(m_cache.HasAppInfo(record.get()));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(AppInfoCacheTest, AnEmptyCacheLeavesTheListAsItWas) {
  std::vector<std::string> ids = {"kept"};
  m_cache.GetAppIDList(ids);
  EXPECT_THAT(ids, ElementsAre("kept"));
}

TEST_F(AppInfoCacheTest, IdsAreAppendedInBytewiseOrder) {
  std::vector<Owned<Layer>> records;
  for (const char* package : {"b", "a", "ab", "B", "\xc3\xa4"}) {
    records.push_back(MakeApp(package));
    m_cache.AddAppInfo(package, records.back().get(), false);
  }
  std::vector<std::string> ids = {"kept"};
  m_cache.GetAppIDList(ids);
  EXPECT_THAT(ids, ElementsAre("kept", "B", "a", "ab", "b", "\xc3\xa4"));
}

TEST_F(AppInfoCacheTest, IdsCanBeListedByAType) {
  const auto with = MakeLayer("with", "ch_feeder_custom", "1");
  const auto without = MakeLayer("without", "ch_feeder_standard", "1");
  const auto empty = MakeLayer("empty", "ch_feeder_custom", "");
  m_cache.AddAppInfo("with", with.get(), false);
  m_cache.AddAppInfo("without", without.get(), false);
  m_cache.AddAppInfo("empty", empty.get(), false);
  std::vector<std::string> ids = {"kept"};
  m_cache.GetAppIDListByType("ch_feeder_custom", ids);
  EXPECT_THAT(ids, ElementsAre("kept", "with"));
}

// Preloading.

TEST_F(AppInfoCacheTest, AppsWithACustomUserInterfaceArePreloadedInKeyOrder) {
  const auto standard = MakeLayer("b", "custom_ui_standard", "1");
  const auto extended = MakeLayer("a", "custom_ui_extended", "1");
  const auto feeder = MakeLayer("c", "ch_feeder_standard", "1");
  m_cache.AddAppInfo("b", standard.get(), false);
  m_cache.AddAppInfo("a", extended.get(), false);
  m_cache.AddAppInfo("c", feeder.get(), false);
  std::vector<PreloadingApp> apps = {{"kept", "kept"}};
  m_cache.GetPreloadingApps(apps);
  EXPECT_THAT(apps, ElementsAre(Pair("kept", "kept"), Pair("a.app", "a-widget"),
                                Pair("b.app", "b-widget")));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Debug] appid : a.app, widgetid : a-widget",
                                            "[Debug] appid : b.app, widgetid : b-widget",
                                            "[Debug] appid : c.app, widgetid : c-widget"));
}

TEST_F(AppInfoCacheTest, AnAppWithBothInterfacesIsPreloadedOnce) {
  const Owned<Layer> record(
      new Layer(MakeLayer("a", "custom_ui_extended", "1").release(), "custom_ui_standard", "1"));
  m_cache.AddAppInfo("a", record.get(), false);
  std::vector<PreloadingApp> apps;
  m_cache.GetPreloadingApps(apps);
  EXPECT_THAT(apps, ElementsAre(Pair("a.app", "a-widget")));
}

TEST_F(AppInfoCacheTest, AnInterfaceWithAnEmptyValueIsNotPreloaded) {
  const auto record = MakeLayer("a", "custom_ui_standard", "");
  m_cache.AddAppInfo("a", record.get(), false);
  std::vector<PreloadingApp> apps;
  m_cache.GetPreloadingApps(apps);
  EXPECT_THAT(apps, IsEmpty());
}

// Clear.

TEST_F(AppInfoCacheTest, ClearingForgetsRecordsListAndFile) {
  Open();
  const auto record = MakeApp("pkg");
  m_cache.AddAppInfo("pkg", record.get(), true);
  m_cache.AddSchedulingItem("pkg");
  m_cache.ClearCacheAndDB();
  EXPECT_THAT(IDs(), IsEmpty());
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 0);
  EXPECT_FALSE(support::Exists(records::StorePath()));
  EXPECT_THAT(Journal(), IsEmpty());
  AppInfoDB::RowMap rows;
  EXPECT_FALSE(m_cache.LoadData(rows));
}

TEST_F(AppInfoCacheTest, ClearingBeforeTheStoreIsOpenRemovesItsFile) {
  StoreRow("pkg", "null");
  m_cache.ClearCacheAndDB();
  EXPECT_FALSE(support::Exists(records::StorePath()));
  m_cache.OpenDB();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] length = -1"));
  EXPECT_THAT(StoredPackages(), IsEmpty());
}

TEST_F(AppInfoCacheTest, ClearingWithoutAFileIsHarmless) {
  m_cache.ClearCacheAndDB();
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
  EXPECT_THAT(IDs(), IsEmpty());
}

// Threads.

TEST_F(AppInfoCacheTest, ChangesFromTwoThreadsAllReachTheStore) {
  Open();
  constexpr int COUNT = 100;
  const auto work = [this](const std::string& prefix, std::vector<AppInfo*>* removed) {
    for (int i = 0; i < COUNT; ++i) {
      const std::string package = prefix + std::to_string(i);
      AppInfo* record = MakeApp(package).release();
      m_cache.AddAppInfo(package, record, true);
      m_cache.UpdateAppInfo(package, record);
      if (i % 2 == 0) {
        removed->push_back(m_cache.RemoveAppInfo(package));
      }
    }
  };
  std::vector<AppInfo*> removed[2];
  std::thread first(work, "x", &removed[0]);
  std::thread second(work, "y", &removed[1]);
  first.join();
  second.join();
  EXPECT_EQ(IDs().size(), static_cast<std::size_t>(COUNT));
  EXPECT_EQ(StoredPackages(), IDs());
  for (const std::string& package : IDs()) {
    removed[0].push_back(m_cache.RemoveAppInfo(package));
  }
  for (const auto& list : removed) {
    for (AppInfo* record : list) {
      Owned<AppInfo>(record).reset();
    }
  }
}

}  // namespace
