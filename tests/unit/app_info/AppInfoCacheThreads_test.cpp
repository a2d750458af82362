// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// Records in use on one thread while another one removes them.
#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <thread>

#include "app_info/AppInfoCache.h"
#include "fake/control/calls.h"
#include "fake/control/log.h"
#include "support/other_thread.h"
#include "unit/app_info/records.h"

namespace {

using records::Layer;
using records::MakeLayer;
using records::Owned;
using records::StoredPackages;
using support::OtherThread;
using testing::ElementsAre;
using testing::IsEmpty;

/// Too long for a string without an allocation.
const std::string LONG = "org.example.packages.of.considerable.length.";

class AppInfoCachePins : public testing::Test {
 protected:
  AppInfoCache& m_cache = *AppInfoCache::GetInstance();
};

TEST_F(AppInfoCachePins, APinIsOnTheRecordOfThePackage) {
  const auto record = MakeLayer("a", "type", "1");
  m_cache.AddAppInfo("a", record.get(), false);
  EXPECT_EQ(m_cache.PinAppInfo("a").get(), record.get());
  EXPECT_EQ(m_cache.PinAppInfo(record.get()).get(), record.get());
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(AppInfoCachePins, APackageWithoutARecordIsADebugLineAndNoPin) {
  EXPECT_EQ(m_cache.PinAppInfo("a"), nullptr);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Debug] Cannot find target AppInfo."));
}

TEST_F(AppInfoCachePins, AnAddressThatNoRecordHasIsNotPinned) {
  const auto record = MakeLayer("a", "type", "1");
  EXPECT_EQ(m_cache.PinAppInfo(record.get()), nullptr);
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(AppInfoCachePins, AWaitEndsWithTheLastPinOfAnotherThread) {
  const auto record = MakeLayer("a", "type", "1");
  m_cache.AddAppInfo("a", record.get(), false);
  PinnedAppInfo first = m_cache.PinAppInfo("a");
  PinnedAppInfo second = m_cache.PinAppInfo(record.get());
  OtherThread wait([this, &record] {
    m_cache.RemoveAppInfo("a");
    m_cache.WaitUntilUnpinned(record.get());
  });
  EXPECT_TRUE(wait.WaitUntilItStops());
  EXPECT_FALSE(wait.Done());
  EXPECT_EQ(m_cache.GetAppInfo("a"), nullptr);
  first.reset();
  EXPECT_TRUE(wait.WaitUntilItStops());
  EXPECT_FALSE(wait.Done());
  second.reset();
  wait.Join();
  EXPECT_TRUE(wait.Done());
}

TEST_F(AppInfoCachePins, PinsOfOtherRecordsAndOfTheOwnThreadDoNotCount) {
  const auto record = MakeLayer("a", "type", "1");
  const auto other = MakeLayer("b", "type", "1");
  m_cache.AddAppInfo("a", record.get(), false);
  m_cache.AddAppInfo("b", other.get(), false);
  OtherThread pins([&] { m_cache.PinAppInfo("a").reset(); });
  pins.Join();
  const PinnedAppInfo own = m_cache.PinAppInfo("a");
  std::promise<void> pinned;
  std::promise<void> end;
  OtherThread holder([&] {
    const PinnedAppInfo pin = m_cache.PinAppInfo("b");
    pinned.set_value();
    end.get_future().wait();
  });
  pinned.get_future().wait();
  m_cache.WaitUntilUnpinned(record.get());  // blocks forever if these pins count
  EXPECT_FALSE(holder.Done());
  end.set_value();
}

/// A layer that lets another thread run while a value is set or read.
class Interrupted final : public AppTypeDecorator {
 public:
  explicit Interrupted(const std::string& package)
      : AppTypeDecorator(new ORVAppInfo(records::Info(package)), "ch_feeder_custom", "standard") {
    m_mapAppliedData["expiration_date_str"];
  }
  static void Release(AppInfo* layer) { delete static_cast<Interrupted*>(layer); }
  ReleaseFunction GetReleaseFunction() const override { return &Release; }
  void SetMetadata(const std::string& type, const std::pair<std::string, std::string>& keyValue,
                   bool bUpdatable) override {
    if (m_hook) {
      m_hook();
    }
    AppTypeDecorator::SetMetadata(type, keyValue, bUpdatable);
  }
  std::string GetMetadata(const std::string& type, const std::string& key) const override {
    if (m_hook) {
      m_hook();
    }
    return AppTypeDecorator::GetMetadata(type, key);
  }

  std::function<void()> m_hook;

 private:
  ~Interrupted() = default;
};

class AppInfoCacheThreads : public AppInfoCachePins {};

TEST_F(AppInfoCacheThreads, ARecordRemovedWhileItsDueTimeIsSetDoesNotComeBack) {
  records::MakeStoreDirectory();
  m_cache.OpenDB();
  const Owned<Interrupted> record(new Interrupted("a"));
  m_cache.AddAppInfo("a", record.get(), true);
  std::unique_ptr<OtherThread> removal;
  record->m_hook = [&] {
    removal = std::make_unique<OtherThread>([this] { m_cache.RemoveAppInfo("a"); });
    EXPECT_TRUE(removal->WaitUntilItStops());
    record->m_hook = nullptr;
  };
  EXPECT_TRUE(m_cache.UpdateSchedulingItem({"a", "", "2030-01-01T00:00:00Z"}));
  removal->Join();
  EXPECT_EQ(m_cache.GetAppInfo("a"), nullptr);
  EXPECT_THAT(StoredPackages(), IsEmpty());
}

TEST_F(AppInfoCacheThreads, ARecordThatAWalkLooksIntoIsPinned) {
  const Owned<Interrupted> record(new Interrupted("a"));
  const auto behind = MakeLayer("b", "ch_feeder_custom", "1");
  m_cache.AddAppInfo("a", record.get(), false);
  m_cache.AddAppInfo("b", behind.get(), false);
  std::unique_ptr<OtherThread> removal;
  record->m_hook = [&] {
    removal = std::make_unique<OtherThread>([this, &record] {
      m_cache.RemoveAppInfo("a");
      m_cache.WaitUntilUnpinned(record.get());
    });
    EXPECT_TRUE(removal->WaitUntilItStops());
    EXPECT_FALSE(removal->Done());
    // The iteration continues although its entry in the map is gone.
    EXPECT_EQ(m_cache.GetAppInfo("a"), nullptr);
  };
  std::vector<std::string> ids = {"before"};
  m_cache.GetAppIDListByType("ch_feeder_custom", ids);
  EXPECT_THAT(ids, ElementsAre("before", "a", "b"));
}

/// For the thread and address sanitizers: records are added and removed during iterations.
TEST_F(AppInfoCacheThreads, WalksMeetRecordsThatComeAndGo) {
  constexpr int ROUNDS = 3000;
  fake::SetRecording(false);
  std::atomic<bool> ended{false};
  const auto readIfPresent = [this](const std::string& id) {
    if (const PinnedAppInfo pin = m_cache.PinAppInfo(id)) {
      pin->GetMetadata("orv_data", "key");
    }
  };
  std::vector<std::unique_ptr<OtherThread>> walks;
  for (int i = 0; i < 2; ++i) {
    walks.push_back(std::make_unique<OtherThread>([this, &ended, &readIfPresent] {
      while (!ended) {
        std::vector<std::string> ids;
        m_cache.GetAppIDList(ids);
        m_cache.GetAppIDListByType("ch_feeder_custom", ids);
        for (const std::string& id : ids) {
          readIfPresent(id);
        }
      }
    }));
  }
  for (int i = 0; i < ROUNDS; ++i) {
    const std::string id = LONG + std::to_string(i % 7);
    m_cache.AddAppInfo(id, MakeLayer(id, "ch_feeder_custom", LONG, {"key"}).release(), false);
    AppInfo* const removed = m_cache.RemoveAppInfo(id);
    m_cache.WaitUntilUnpinned(removed);
    removed->GetReleaseFunction()(removed);
  }
  ended = true;
  walks.clear();
  std::vector<std::string> ids;
  m_cache.GetAppIDList(ids);
  EXPECT_THAT(ids, IsEmpty());
}

}  // namespace
