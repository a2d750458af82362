// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/AppTypeLayer.h"

#include <gmock/gmock.h>

#include <stdexcept>

#include "fake/control/log.h"
#include "support/other_thread.h"
#include "unit/app_info/records.h"

namespace {

using records::Info;
using records::Journal;
using records::MakeLayer;
using testing::AnyOf;
using testing::ElementsAre;
using testing::IsEmpty;

/// Fails to be constructed or to clean up if its value says so.
class Refusing final : public AppTypeLayer<Refusing> {
 private:
  friend class AppTypeLayer<Refusing>;
  Refusing(AppInfo* pAppInfo, const std::string& rValue, int extra)
      : AppTypeLayer(pAppInfo, "refusing", rValue) {
    if (rValue == "construction") {
      throw std::runtime_error("no layer");
    }
    m_mapAppliedData["extra"] = std::to_string(extra);
  }
  ~Refusing() = default;
  void CleanUp() {
    Journal().push_back("clean up");
    if (GetValue(false) == "cleaning up") {
      throw std::runtime_error("no cleaning up");
    }
  }
};

TEST(AppTypeLayer, TheFactoryLogsTheValueAndPassesItsExtraArgument) {
  const records::Owned<AppInfo> layer(
      Refusing::DecorateAppType(MakeLayer("a", "type", "1").release(), "value", 7));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rMetadataValue : value"));
  ASSERT_EQ(fake::Logs().size(), 1u);
  EXPECT_THAT(fake::Logs()[0].text, testing::HasSubstr(": DecorateAppType("));
  EXPECT_EQ(layer->GetAppType(), "refusing");
  EXPECT_EQ(layer->GetMetadata("orv_data", "extra"), "7");
}

TEST(AppTypeLayer, AConstructorThatThrowsLeavesTheChainToTheCaller) {
  const auto inner = MakeLayer("a", "type", "1");
  EXPECT_THROW(Refusing::DecorateAppType(inner.get(), "construction", 0), std::runtime_error);
  EXPECT_THAT(Journal(), IsEmpty());
  EXPECT_EQ(inner->GetMetadata("orv_type", "type"), "1");
}

TEST(AppTypeLayer, AReleaseCleansUpAndThenReleasesWhatIsWrapped) {
  AppInfo* const layer =
      Refusing::DecorateAppType(MakeLayer("a", "type", "1").release(), "value", 0);
  layer->GetReleaseFunction()(layer);
  EXPECT_THAT(Journal(), ElementsAre("clean up", "type release"));
}

TEST(AppTypeLayer, AnExceptionOfTheCleanUpIsLoggedAndTheReleaseGoesOn) {
  AppInfo* const layer =
      Refusing::DecorateAppType(MakeLayer("a", "type", "1").release(), "cleaning up", 0);
  fake::ClearLog();
  EXPECT_NO_THROW(Refusing::Release(layer));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] exception : no cleaning up"));
  EXPECT_THAT(Journal(), ElementsAre("clean up", "type release"));
}

TEST(AppTypeLayer, AReleaseTakesNull) {
  EXPECT_NO_THROW(Refusing::Release(nullptr));
  EXPECT_THAT(Journal(), IsEmpty());
}

/// The texts are long, so that the other thread can run while one is copied.
TEST(AppTypeLayer, MetadataIsReadWholeWhileItIsSet) {
  constexpr int ROUNDS = 20000;
  const std::string early(20000, '1');
  const std::string late(20001, '2');
  const auto layer = MakeLayer("a", "type", early, {"key"});
  layer->SetMetadata("orv_data", {"key", early}, false);
  support::OtherThread writer([&] {
    for (int i = 0; i < ROUNDS; ++i) {
      layer->SetMetadata("orv_data", {"key", i % 2 == 0 ? late : early}, false);
      layer->SetMetadata("orv_type", {"type", i % 2 == 0 ? late : early}, true);
    }
  });
  while (!writer.Done()) {
    ASSERT_THAT(layer->GetMetadata("orv_data", "key"), AnyOf(early, late));
    MetadataMap metadata;
    layer->GetAllMetadata(metadata);
    ASSERT_THAT(metadata["orv_data"]["key"], AnyOf(early, late));
  }
}

}  // namespace
