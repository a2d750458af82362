// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// Locks that are held for accesses to containers and strings only. Such an access allocates or
// releases memory when its strings are long: another thread that wants the same lock at that moment
// waits. Without the lock it never does.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>

#include "app_info/AppInfoCache.h"
#include "app_info/app_type/ChFeederStandard.h"
#include "app_info/app_type/CustomUIExtended.h"
#include "fake/control/fake.h"
#include "support/files.h"
#include "support/other_thread.h"
#include "unit/app_info/app_type/layers.h"
#include "unit/app_info/records.h"
#include "unit/locks/memory_hook.h"
#include "utils/AppPreloadingUtils.h"
#include "utils/FileSystemUtils.h"

namespace {

/// Longer than the characters that a string holds without an allocation.
const std::string LONG = "an.identifier.of.more.than.forty.characters.";

enum class Probe { Created, Started, Cancelled };

/// Whether the probe has to wait for a lock when it begins now, on another thread.
bool Waits(const std::function<void()>& probe,
           std::vector<std::unique_ptr<support::OtherThread>>& threads) {
  const auto state = std::make_shared<std::atomic<Probe>>(Probe::Created);
  threads.push_back(std::make_unique<support::OtherThread>([&probe, state] {
    // Both wait where the operation is inside the fake platform.
    fake::CallCount("");
    fake::Logs();
    Probe expected = Probe::Created;
    if (state->compare_exchange_strong(expected, Probe::Started)) probe();
  }));
  EXPECT_TRUE(threads.back()->WaitUntilItStops());
  Probe expected = Probe::Created;
  const bool isStarted = !state->compare_exchange_strong(expected, Probe::Cancelled);
  return isStarted && !threads.back()->Done();
}

/// Whether another thread has to wait for a lock of the operation at one of the moments when the
/// operation allocates or releases memory. The probe takes that lock. When it takes a second one,
/// `other` is a probe that takes the second one alone.
bool MakesWait(const std::function<void()>& operation, const std::function<void()>& probe,
               const std::function<void()>& other = nullptr) {
  std::vector<std::unique_ptr<support::OtherThread>> threads;
  bool waited = false;
  memory_hook::RunInterrupted(operation, [&] {
    if (waited || (other && Waits(other, threads))) return;
    waited = Waits(probe, threads);
  });
  return waited;
}

/// Lets its tests into what the layers share with their base.
class OpenLayer final : public AppTypeDecorator {
 public:
  OpenLayer() : AppTypeDecorator(new ORVAppInfo(records::Info("pkg")), LONG + "type", LONG) {
    m_mapAppliedData[LONG + "key"] = LONG;
    m_mapUpdatableData[LONG + "key"] = LONG;
  }
  static void Release(AppInfo* layer) { delete static_cast<OpenLayer*>(layer); }
  ReleaseFunction GetReleaseFunction() const override { return &Release; }
  using AppTypeDecorator::GetData;
  using AppTypeDecorator::GetDataOrCreate;
  using AppTypeDecorator::GetValue;

 private:
  ~OpenLayer() = default;
};

class LeafLocks : public testing::Test {
 protected:
  LeafLocks() { fake::ClearCalls(); }
};

TEST_F(LeafLocks, GuardTheMetadataOfALayer) {
  const records::Owned<OpenLayer> layer(new OpenLayer);
  const std::string type = LONG + "type";
  const std::string key = LONG + "key";
  const auto probe = [&] { layer->GetMetadata("orv_type", type); };
  std::string growing = LONG;
  const auto set = [&](const char* category, const std::string& name, bool updatable) {
    growing += growing;
    const std::pair<std::string, std::string> entry(name, growing);
    return MakesWait([&] { layer->SetMetadata(category, entry, updatable); }, probe);
  };
  EXPECT_TRUE(set("orv_data", key, false));
  EXPECT_TRUE(set("orv_data", key, true));
  EXPECT_TRUE(set("orv_type", type, true));
  EXPECT_TRUE(MakesWait([&] { layer->GetMetadata("orv_type", type); }, probe));
  EXPECT_TRUE(MakesWait([&] { layer->GetMetadata("orv_data", key); }, probe));
  EXPECT_TRUE(MakesWait([&] { layer->GetValue(true); }, probe));
  EXPECT_TRUE(MakesWait([&] { layer->GetData(true); }, probe));
  EXPECT_TRUE(MakesWait([&] { layer->GetDataOrCreate(true, key); }, probe));
  MetadataMap all;
  EXPECT_TRUE(MakesWait([&] { layer->GetAllMetadata(all); }, probe));
  EXPECT_TRUE(MakesWait([&] { layer->RemoveMetadata(key, key); }, probe));
}

TEST_F(LeafLocks, GuardTheDirectoryThatAFeederInserts) {
  support::MakeDirectories(FileSystemUtils::GetMetaDataDirectoryPath() + layers::PACKAGE);
  const auto feeder = layers::Decorate<ChFeederStandard>("extended");
  layers::Apply(*feeder, "channel_data_url", "file://" + LONG);
  layers::Apply(*feeder, "schedule_data_url", "file://" + LONG);
  EXPECT_TRUE(MakesWait([&] { feeder->SetMetaDataDataList(false); },
                        [&] { feeder->GetMetadata("orv_type", "ch_feeder_standard"); }));
}

TEST_F(LeafLocks, GuardTheListOfLayersWithScreens) {
  // Nobody's layer: the callback takes the lock and finds that it is gone.
  const auto probe = [] { CustomUIExtended::OnAppStatusChanged(6, nullptr); };
  layers::Chain<CustomUIExtended> screen;
  EXPECT_TRUE(MakesWait([&] { screen = layers::Decorate<CustomUIExtended>(LONG); }, probe));
  EXPECT_TRUE(MakesWait([&] { screen.reset(); }, probe));
}

TEST_F(LeafLocks, GuardTheRecordsOfTheCache) {
  AppInfoCache& cache = *AppInfoCache::GetInstance();
  const auto probe = [&] {
    std::vector<std::string> ids;
    cache.GetAppIDList(ids);
  };
  const auto record = records::MakeLayer(LONG, LONG, LONG);
  EXPECT_TRUE(MakesWait([&] { cache.AddAppInfo(LONG, record.get(), false); }, probe));
  EXPECT_TRUE(MakesWait(probe, probe));
  std::vector<std::string> ids;
  EXPECT_TRUE(MakesWait([&] { cache.GetAppIDListByType(LONG, ids); }, probe));
  PinnedAppInfo pin;
  EXPECT_TRUE(MakesWait([&] { pin = cache.PinAppInfo(LONG); }, probe));
  EXPECT_TRUE(MakesWait([&] { pin.reset(); }, probe));
  EXPECT_TRUE(MakesWait([&] { cache.RemoveAppInfo(LONG); }, probe));
  cache.AddAppInfo(LONG, record.get(), false);
  EXPECT_TRUE(MakesWait([&] { cache.ClearCacheAndDB(); }, probe));
}

/// Only the lock around the followed app and its callbacks.
void WalkCallbacks() {
  AppPreloadingUtils::NotifyWebAppStatus();
}

void Follow(const std::string& app, const std::string& type) {
  AppPreloadingUtils::AddWebStatusChangedCallback(app, type, {nullptr, nullptr});
}

TEST_F(LeafLocks, GuardTheAppThatIsFollowedAndItsCallbacks) {
  EXPECT_TRUE(MakesWait([] { Follow(LONG, LONG); }, &WalkCallbacks));
  EXPECT_TRUE(MakesWait(&WalkCallbacks, &WalkCallbacks));
  EXPECT_TRUE(MakesWait([] { AppPreloadingUtils::RemoveWebStatusChangedCallback(LONG, LONG); },
                        &WalkCallbacks));
  Follow(LONG, LONG);
  AppPreloadingUtils::RegisterAppStatusVconfCallback(LONG);
  EXPECT_TRUE(MakesWait([] { AppPreloadingUtils::UnregisterAppStatusVconfCallback(LONG); },
                        &WalkCallbacks));
  // A preload compares its app with a copy of the followed one.
  Follow(LONG, LONG);
  fake::Fail("app_control_create", -1, fake::FOREVER);
  EXPECT_TRUE(MakesWait(
      [] {
        AppPreloadingUtils::PreloadAppAndRegisterAppStatusChangedCB("a", "b", {nullptr, nullptr});
      },
      &WalkCallbacks));
}

TEST_F(LeafLocks, KeepAddAndRemoveOfCallbacksApart) {
  const auto add = [] { Follow(LONG, "b"); };
  const auto remove = [] { AppPreloadingUtils::RemoveWebStatusChangedCallback(LONG, "c"); };
  Follow(LONG, LONG);
  EXPECT_TRUE(MakesWait([] { Follow(LONG + "2", LONG); }, remove, &WalkCallbacks));
  EXPECT_TRUE(
      MakesWait([] { AppPreloadingUtils::RemoveWebStatusChangedCallback(LONG + "2", LONG); }, add,
                &WalkCallbacks));
}

TEST_F(LeafLocks, KeepAnItemFromTheSchedulingListWhileItIsEmptied) {
  AppInfoCache& cache = *AppInfoCache::GetInstance();
  const auto record = records::MakeLayer(LONG, "ch_feeder_custom", "x");
  cache.AddAppInfo(LONG, record.get(), false);
  EXPECT_EQ(cache.ResetSchedulingList(), 1);
  EXPECT_TRUE(
      MakesWait([&] { cache.ClearSchedulingList(); }, [&] { cache.AddSchedulingItem(LONG); }));
}

}  // namespace
