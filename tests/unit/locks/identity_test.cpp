// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// Identity and links of a chain change under the lock of the app list, and whoever uses the record
// without its guard reads them under that lock. Meant for the thread and address sanitizers.
#include <gtest/gtest.h>

#include <atomic>

#include "app_info/AppInfoCache.h"
#include "fake/control/fake.h"
#include "support/other_thread.h"
#include "unit/app_info/records.h"

namespace {

using records::Layer;

constexpr int ROUNDS = 1500;
/// Forty characters and more: never inside the string object.
const std::string IDS[] = {"a.widget.identifier.of.more.than.forty.characters",
                           "another.widget.identifier.that.is.longer.than.the.first.one"};

records::Owned<Layer> MakeChain(const std::string& suffix) {
  AppBaseInfo info = records::Info("a.package.identifier.of.more.than.forty.characters" + suffix);
  info.m_sWidgetID = IDS[0];
  auto* const inner =
      new Layer(new ORVAppInfo(info), "ch_feeder_custom", "standard", {"expiration_date_str"});
  auto* const middle = new Layer(inner, "ch_feeder_standard", "extended", {"channel_data_url"});
  return records::Owned<Layer>(new Layer(middle, "custom_ui_standard", "info"));
}

class IdentityAndChain : public testing::Test {
 protected:
  IdentityAndChain() {
    fake::SetRecording(false);
    m_cache.AddAppInfo(m_package, m_record.get(), false);
  }
  /// As the widget-id callback on the main loop does.
  void ChangeWidgetID(int round) {
    const auto lock = m_cache.LockAppList();
    ASSERT_TRUE(m_cache.HasAppInfo(m_record.get()));
    m_record->m_sWidgetID = IDS[round % 2];
  }
  /// As the installer's task does: a record comes, loses its middle layer, and goes.
  void ComeAndGo(int round) {
    const auto record = MakeChain("." + std::to_string(round % 3));
    m_cache.AddAppInfo(record->m_sPackageID, record.get(), false);
    AppInfo* extracted = nullptr;
    {
      const auto lock = m_cache.LockAppList();
      AppInfo* next = nullptr;
      extracted = record->ExtractTargetAppType("ch_feeder_standard", &next);
    }
    ASSERT_NE(extracted, nullptr);
    extracted->GetReleaseFunction()(extracted);
    m_cache.RemoveAppInfo(record->m_sPackageID);
    m_cache.WaitUntilUnpinned(record.get());
  }
  /// As the scheduler's task, the boost decision and the first screen do.
  void Read() {
    m_cache.ResetSchedulingList();
    SchedulingItem item;
    m_cache.GetNextSchedulingItem(item);
    std::vector<PreloadingApp> apps;
    m_cache.GetPreloadingApps(apps);
    for (const auto& [app, widget] : apps) {
      EXPECT_TRUE(widget == IDS[0] || widget == IDS[1]) << widget;
    }
    m_cache.UpdateSchedulingItem({m_package, "", IDS[0]});
  }

  AppInfoCache& m_cache = *AppInfoCache::GetInstance();
  const records::Owned<Layer> m_record = MakeChain("");
  const std::string m_package = m_record->m_sPackageID;
};

TEST_F(IdentityAndChain, AreReadWhileTheyChange) {
  std::atomic<bool> ended{false};
  support::OtherThread scheduler([&] {
    while (!ended) Read();
  });
  support::OtherThread mainLoop([&] {
    for (int round = 0; round < ROUNDS; ++round) ChangeWidgetID(round);
  });
  for (int round = 0; round < ROUNDS / 5; ++round) ComeAndGo(round);
  mainLoop.Join();
  ended = true;
}

}  // namespace
