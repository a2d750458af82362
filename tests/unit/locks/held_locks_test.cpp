// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// The two locks of the cache: which operations wait for which of them.
#include <gtest/gtest.h>

#include <map>
#include <memory>

#include "app_info/AppInfoCache.h"
#include "fake/control/fake.h"
#include "support/other_thread.h"
#include "unit/app_info/records.h"

namespace {

/// A layer that calls a function while its value is read.
class Interrupted final : public AppTypeDecorator {
 public:
  Interrupted() : AppTypeDecorator(new ORVAppInfo(records::Info("a")), "ch_feeder_custom", "x") {}
  static void Release(AppInfo* layer) { delete static_cast<Interrupted*>(layer); }
  ReleaseFunction GetReleaseFunction() const override { return &Release; }
  std::string GetMetadata(const std::string& type, const std::string& key) const override {
    if (const auto hook = std::exchange(m_hook, nullptr)) hook();
    return AppTypeDecorator::GetMetadata(type, key);
  }

  mutable std::function<void()> m_hook;

 private:
  ~Interrupted() = default;
};

struct Operation {
  std::string name;
  std::function<void()> run;
  bool takesAppList;
  bool takesSchedulingList;
};

class HeldLocks : public testing::Test {
 protected:
  HeldLocks() {
    m_cache.AddAppInfo("a", m_record.get(), false);
    m_cache.AddAppInfo("b", m_other.get(), false);
  }
  /// Runs the operation on another thread and lets it come as far as it can.
  bool Waits(const std::function<void()>& run) {
    m_threads.push_back(std::make_unique<support::OtherThread>(run));
    EXPECT_TRUE(m_threads.back()->WaitUntilItStops());
    return !m_threads.back()->Done();
  }
  /// While the calling thread holds the lock or locks.
  void ExpectWaits(bool holdsAppList, bool holdsSchedulingList) {
    for (const Operation& operation : m_operations) {
      const bool waits = (holdsAppList && operation.takesAppList) ||
                         (holdsSchedulingList && operation.takesSchedulingList);
      EXPECT_EQ(Waits(operation.run), waits) << operation.name;
    }
  }

  AppInfoCache& m_cache = *AppInfoCache::GetInstance();
  const records::Owned<Interrupted> m_record{new Interrupted};
  const records::Owned<records::Layer> m_other = records::MakeLayer("b", "ch_feeder_custom", "x");
  std::vector<std::string> m_ids;
  std::vector<PreloadingApp> m_apps;
  SchedulingItem m_item;
  const std::vector<Operation> m_operations = {
      {"GetAppIDList",
       [] {
         std::vector<std::string> ids;
         AppInfoCache::GetInstance()->GetAppIDList(ids);
       },
       false, false},
      {"GetAppIDListByType",
       [] {
         std::vector<std::string> ids;
         AppInfoCache::GetInstance()->GetAppIDListByType("type", ids);
       },
       false, false},
      {"GetAppInfo", [this] { m_cache.GetAppInfo("a"); }, true, false},
      {"HasAppInfo", [this] { m_cache.HasAppInfo(nullptr); }, true, false},
      {"PinAppInfo of an id", [this] { m_cache.PinAppInfo("absent"); }, true, false},
      {"PinAppInfo of an address", [this] { m_cache.PinAppInfo(static_cast<AppInfo*>(nullptr)); },
       true, false},
      {"AddAppInfo", [this] { m_cache.AddAppInfo("b", m_other.get(), false); }, true, false},
      {"UpdateAppInfo", [this] { m_cache.UpdateAppInfo("b", m_other.get()); }, true, false},
      {"RemoveAppInfo", [this] { m_cache.RemoveAppInfo("absent"); }, true, false},
      {"GetPreloadingApps",
       [] {
         std::vector<PreloadingApp> apps;
         AppInfoCache::GetInstance()->GetPreloadingApps(apps);
       },
       true, false},
      {"UpdateSchedulingItem",
       [this] {
         m_cache.UpdateSchedulingItem({"absent", "", ""});
       },
       true, false},
      {"LockAppList", [this] { const auto lock = m_cache.LockAppList(); }, true, false},
      {"OpenDB", [this] { m_cache.OpenDB(); }, true, false},
      {"AddSchedulingItem", [this] { m_cache.AddSchedulingItem("absent"); }, true, true},
      {"RemoveSchedulingItem", [this] { m_cache.RemoveSchedulingItem("absent"); }, false, true},
      {"GetSchedulingListSize", [this] { m_cache.GetSchedulingListSize(); }, false, true},
      {"ClearSchedulingList", [this] { m_cache.ClearSchedulingList(); }, false, true},
      {"GetNextSchedulingItem",
       [] {
         SchedulingItem item;
         AppInfoCache::GetInstance()->GetNextSchedulingItem(item);
       },
       false, true},
      {"ResetSchedulingList", [this] { m_cache.ResetSchedulingList(); }, true, true},
      {"ClearCacheAndDB", [this] { m_cache.ClearCacheAndDB(); }, true, false},
  };
  std::vector<std::unique_ptr<support::OtherThread>> m_threads;  // last: they use the others
};

TEST_F(HeldLocks, OfTheAppListAloneKeepOutAllThatTouchTheRecords) {
  const auto lock = m_cache.LockAppList();
  // The walk of the refill takes the scheduling list before it waits: it comes last.
  for (const Operation& operation : m_operations) {
    if (operation.takesSchedulingList) continue;
    EXPECT_EQ(Waits(operation.run), operation.takesAppList) << operation.name;
  }
}

TEST_F(HeldLocks, OfTheAppListLeaveTheSchedulingListFree) {
  const auto lock = m_cache.LockAppList();
  for (const Operation& operation : m_operations) {
    if (!operation.takesSchedulingList || operation.name == "ResetSchedulingList") continue;
    EXPECT_EQ(Waits(operation.run), operation.takesAppList) << operation.name;
  }
  EXPECT_TRUE(Waits([this] { m_cache.ResetSchedulingList(); }));
}

TEST_F(HeldLocks, OfARefillAreBoth) {
  m_record->m_hook = [this] { ExpectWaits(true, true); };
  m_cache.ResetSchedulingList();
}

TEST_F(HeldLocks, OfAPickAreBothWhileItReadsTheRecord) {
  m_cache.ResetSchedulingList();
  m_record->m_hook = [this] { ExpectWaits(true, true); };
  EXPECT_TRUE(m_cache.GetNextSchedulingItem(m_item));
}

TEST_F(HeldLocks, OfTheListOfWebAppsAreTheAppListsAlone) {
  m_record->m_hook = [this] {
    EXPECT_TRUE(Waits([this] { m_cache.GetAppInfo("b"); }));
    EXPECT_FALSE(Waits([this] { m_cache.GetSchedulingListSize(); }));
  };
  m_cache.GetPreloadingApps(m_apps);
}

TEST_F(HeldLocks, OfTheWalkByTypeAreNone) {
  m_record->m_hook = [this] {
    for (const Operation& operation : m_operations) {
      EXPECT_FALSE(Waits(operation.run)) << operation.name;
    }
  };
  m_cache.GetAppIDListByType("type", m_ids);
}

}  // namespace
