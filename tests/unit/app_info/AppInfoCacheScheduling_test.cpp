// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <future>

#include "app_info/AppInfoCache.h"
#include "fake/control/log.h"
#include "unit/app_info/records.h"

namespace {

using records::Layer;
using records::MakeLayer;
using records::Owned;
using records::QueryStore;
using testing::ElementsAre;
using testing::IsEmpty;

class SchedulingListTest : public testing::Test {
 protected:
  void TearDown() override { records::ExpectLevelsFitTheirWords(); }
  /// A service app in the cache.
  Layer* Add(const std::string& package, const std::string& type = "ch_feeder_custom",
             const std::string& value = "standard") {
    m_records.push_back(MakeLayer(package, type, value, {"expiration_date_str"}));
    m_cache.AddAppInfo(package, m_records.back().get(), false);
    return m_records.back().get();
  }
  /// Removes all items from the list.
  std::vector<std::string> Drain() {
    std::vector<std::string> packages;
    SchedulingItem item;
    while (m_cache.GetNextSchedulingItem(item)) {
      packages.push_back(item.package_id);
    }
    return packages;
  }

  AppInfoCache& m_cache = *AppInfoCache::GetInstance();
  std::vector<Owned<Layer>> m_records;
};

TEST_F(SchedulingListTest, TheListStartsEmpty) {
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 0);
  EXPECT_THAT(Drain(), IsEmpty());
}

TEST_F(SchedulingListTest, AnAddedPackageComesNext) {
  Add("a");
  Add("b");
  Add("c");
  m_cache.AddSchedulingItem("a");
  m_cache.AddSchedulingItem("b");
  m_cache.AddSchedulingItem("c");
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 3);
  EXPECT_THAT(Drain(), ElementsAre("c", "b", "a"));
}

TEST_F(SchedulingListTest, APackageAddedAgainMovesToTheFrontAndIsThereOnce) {
  Add("a");
  Add("b");
  Add("c");
  m_cache.ResetSchedulingList();
  m_cache.AddSchedulingItem("b");
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 3);
  EXPECT_THAT(Drain(), ElementsAre("b", "a", "c"));
}

TEST_F(SchedulingListTest, AnyRecordCanBeAddedWhateverItsType) {
  Add("a", "ch_feeder_standard");
  m_cache.AddSchedulingItem("a");
  EXPECT_THAT(Drain(), ElementsAre("a"));
}

TEST_F(SchedulingListTest, AnUnknownPackageIsNotAdded) {
  m_cache.AddSchedulingItem("stranger");
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 0);
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rPackageID : stranger",
                          "[Debug] Cannot find the target PackageID in m_mapAppList : stranger"));
}

TEST_F(SchedulingListTest, ARemovedPackageIsOffTheList) {
  Add("a");
  Add("b");
  m_cache.ResetSchedulingList();
  fake::ClearLog();
  m_cache.RemoveSchedulingItem("a");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rPackageID : a"));
  EXPECT_THAT(Drain(), ElementsAre("b"));
}

TEST_F(SchedulingListTest, RemovalOfWhatIsNotListedIsADebugLine) {
  Add("a");
  m_cache.RemoveSchedulingItem("a");
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rPackageID : a",
                          "[Debug] Cannot find the target PackageID in m_vSchedulingList : a"));
}

TEST_F(SchedulingListTest, AnIdCanBeRemovedAfterItsRecordHasGone) {
  Add("a");
  m_cache.AddSchedulingItem("a");
  m_cache.RemoveAppInfo("a");
  m_cache.RemoveSchedulingItem("a");
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 0);
}

TEST_F(SchedulingListTest, ARefilledListHoldsEveryServiceAppInAscendingOrder) {
  Add("c");
  Add("a");
  Add("b", "ch_feeder_standard");
  Add("d", "ch_feeder_custom", "");
  EXPECT_EQ(m_cache.ResetSchedulingList(), 2);
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 2);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Debug] value : standard", "[Debug] value : ",
                                            "[Debug] value : standard", "[Debug] value : "));
  EXPECT_THAT(Drain(), ElementsAre("a", "c"));
}

TEST_F(SchedulingListTest, RefillingForgetsWhatWasListed) {
  Add("a", "ch_feeder_standard");
  m_cache.AddSchedulingItem("a");
  EXPECT_EQ(m_cache.ResetSchedulingList(), 0);
  EXPECT_THAT(Drain(), IsEmpty());
}

TEST_F(SchedulingListTest, ADueTimeInTheFutureDoesNotKeepAnAppOffTheList) {
  Add("a")->SetMetadata("orv_data", {"expiration_date_str", "2999-01-01T00:00:00Z"}, false);
  EXPECT_EQ(m_cache.ResetSchedulingList(), 1);
}

TEST_F(SchedulingListTest, APickedItemIsACopyOfItsRecordAndOffTheList) {
  Add("a")->SetMetadata("orv_data", {"expiration_date_str", "2020-01-01T00:00:00Z"}, false);
  m_cache.AddSchedulingItem("a");
  fake::ClearLog();
  SchedulingItem item;
  EXPECT_TRUE(m_cache.GetNextSchedulingItem(item));
  EXPECT_EQ(item.package_id, "a");
  EXPECT_EQ(item.service_id, "a.service");
  EXPECT_EQ(item.expiration_date, "2020-01-01T00:00:00Z");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] m_vSchedulingList.size() : 1"));
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 0);
}

TEST_F(SchedulingListTest, APickedItemNamesTheRecordsOwnPackageId) {
  Add("a")->m_sPackageID = "renamed";
  m_cache.AddSchedulingItem("a");
  SchedulingItem item;
  EXPECT_TRUE(m_cache.GetNextSchedulingItem(item));
  EXPECT_EQ(item.package_id, "renamed");
}

TEST_F(SchedulingListTest, AnEmptyListLeavesTheItemAsItWas) {
  SchedulingItem item{"p", "s", "e"};
  EXPECT_FALSE(m_cache.GetNextSchedulingItem(item));
  EXPECT_EQ(item.package_id, "p");
  EXPECT_EQ(item.service_id, "s");
  EXPECT_EQ(item.expiration_date, "e");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] m_vSchedulingList.size() : 0"));
}

TEST_F(SchedulingListTest, IdsWithoutRecordsAreDroppedSilently) {
  Add("a");
  Add("b");
  Add("c");
  m_cache.ResetSchedulingList();
  m_cache.RemoveAppInfo("a");
  m_cache.RemoveAppInfo("b");
  fake::ClearLog();
  SchedulingItem item;
  EXPECT_TRUE(m_cache.GetNextSchedulingItem(item));
  EXPECT_EQ(item.package_id, "c");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] m_vSchedulingList.size() : 3"));
}

TEST_F(SchedulingListTest, AListOfIdsWithoutRecordsRunsOut) {
  Add("a");
  Add("b");
  m_cache.ResetSchedulingList();
  m_cache.RemoveAppInfo("a");
  m_cache.RemoveAppInfo("b");
  SchedulingItem item;
  EXPECT_FALSE(m_cache.GetNextSchedulingItem(item));
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 0);
}

TEST_F(SchedulingListTest, ClearingEmptiesTheList) {
  Add("a");
  m_cache.ResetSchedulingList();
  m_cache.ClearSchedulingList();
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 0);
}

// The due time.

TEST_F(SchedulingListTest, ADueTimeIsSetInTheRecordAndItsRow) {
  records::MakeStoreDirectory();
  m_cache.OpenDB();
  Layer* record = Add("a");
  m_cache.AddAppInfo("a", record, true);
  EXPECT_TRUE(m_cache.UpdateSchedulingItem({"a", "whatever", "2030-01-01T00:00:00Z"}));
  EXPECT_EQ(record->GetMetadata("orv_data", "expiration_date_str"), "2030-01-01T00:00:00Z");
  EXPECT_EQ(record->m_sServiceID, "a.service");
  EXPECT_THAT(
      QueryStore("SELECT variables FROM appinfo"),
      ElementsAre(ElementsAre("{\"orv_data\":{\"expiration_date_str\":\"2030-01-01T00:00:00Z\"},"
                              "\"orv_type\":{\"ch_feeder_custom\":\"standard\"}}\n")));
}

TEST_F(SchedulingListTest, ADueTimeLeavesTheListAlone) {
  Add("a");
  m_cache.UpdateSchedulingItem({"a", "", "2030-01-01T00:00:00Z"});
  EXPECT_EQ(m_cache.GetSchedulingListSize(), 0);
}

TEST_F(SchedulingListTest, ADueTimeOfAnUnknownPackageIsRefused) {
  EXPECT_FALSE(m_cache.UpdateSchedulingItem({"a", "a.service", "2030-01-01T00:00:00Z"}));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Debug] Cannot find target AppInfo.",
                                            "[Debug] Cannot find TargetApp[PackageID : a]"));
}

TEST_F(SchedulingListTest, ADueTimeThatTheStoreRefusesIsAFailureAndStaysInTheRecord) {
  Layer* record = Add("a");
  EXPECT_FALSE(m_cache.UpdateSchedulingItem({"a", "", "2030-01-01T00:00:00Z"}));
  EXPECT_EQ(record->GetMetadata("orv_data", "expiration_date_str"), "2030-01-01T00:00:00Z");
}

/// The scheduler picks while a decorator adds: the two take the locks in opposite orders.
TEST_F(SchedulingListTest, AddsAndPicksNeverWaitOnEachOther) {
  Add("a");
  Add("b");
  constexpr int ROUNDS = 20000;
  auto adding = std::async(std::launch::async, [this] {
    for (int i = 0; i < ROUNDS; ++i) {
      m_cache.AddSchedulingItem(i % 2 == 0 ? "a" : "b");
    }
  });
  auto picking = std::async(std::launch::async, [this] {
    SchedulingItem item;
    for (int i = 0; i < ROUNDS; ++i) {
      if (!m_cache.GetNextSchedulingItem(item)) {
        m_cache.ResetSchedulingList();
      }
    }
  });
  // A deadlocked thread can be neither ended nor abandoned.
  for (auto* thread : {&adding, &picking}) {
    if (thread->wait_for(std::chrono::seconds(60)) != std::future_status::ready) {
      ADD_FAILURE() << "an add and a pick wait for each other";
      std::_Exit(1);
    }
  }
  EXPECT_LE(m_cache.GetSchedulingListSize(), 2);
}

}  // namespace
