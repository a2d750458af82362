// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/ORVAppInfo.h"

#include <gmock/gmock.h>

#include <type_traits>

#include "unit/app_info/records.h"

namespace {

using records::Info;
using records::MakeRecord;
using testing::IsEmpty;

TEST(ORVAppInfo, ARecordHoldsTheFiveIdentityStrings) {
  const auto record = MakeRecord(Info("pkg"));
  EXPECT_EQ(record->m_sPackageID, "pkg");
  EXPECT_EQ(record->m_sAppID, "pkg.app");
  EXPECT_EQ(record->m_sWidgetID, "pkg-widget");
  EXPECT_EQ(record->m_sServiceID, "pkg.service");
  EXPECT_EQ(record->m_sVersion, "1.2.3");
}

TEST(ORVAppInfo, ABareRecordIsOfTypeOrvApp) {
  EXPECT_EQ(MakeRecord(Info("pkg"))->GetAppType(), "orv_app");
}

TEST(ORVAppInfo, ABareRecordAnswersEveryKeyWithAnEmptyText) {
  const auto record = MakeRecord(Info("pkg"));
  record->SetMetadata("orv_data", {"channel_data_url", "x"}, false);
  record->SetMetadata("orv_type", {"ch_feeder_standard", "x"}, true);
  EXPECT_EQ(record->GetMetadata("orv_data", "channel_data_url"), "");
  EXPECT_EQ(record->GetMetadata("orv_type", "ch_feeder_standard"), "");
  EXPECT_EQ(record->GetMetadata("", ""), "");
}

TEST(ORVAppInfo, ABareRecordAddsNoMetadata) {
  MetadataMap metadata;
  MakeRecord(Info("pkg"))->GetAllMetadata(metadata);
  EXPECT_THAT(metadata, IsEmpty());
}

TEST(ORVAppInfo, NoLayerCanBeExtractedFromABareRecord) {
  const auto record = MakeRecord(Info("pkg"));
  AppInfo* next = record.get();
  EXPECT_EQ(record->ExtractTargetAppType("orv_app", &next), nullptr);
  EXPECT_EQ(next, record.get());
}

TEST(ORVAppInfo, OperationsAndRemovalLeaveABareRecordAlone) {
  const auto record = MakeRecord(Info("pkg"));
  record->RunOperation(true);
  record->UpdateOperation();
  record->StopOperation();
  record->RemoveMetadata("orv_data", "channel_data_url");
  EXPECT_EQ(record->m_sPackageID, "pkg");
  EXPECT_EQ(record->m_sWidgetID, "pkg-widget");
}

TEST(ORVAppInfo, TheReleaseFunctionAcceptsNull) {
  const auto record = MakeRecord(Info("pkg"));
  const AppInfo::ReleaseFunction release = record->GetReleaseFunction();
  ASSERT_NE(release, nullptr);
  release(nullptr);
  EXPECT_EQ(record->m_sPackageID, "pkg");
}

TEST(ORVAppInfo, ARecordCannotBeDeletedThroughItsBase) {
  EXPECT_FALSE(std::has_virtual_destructor<AppInfo>::value);
  EXPECT_FALSE(std::is_destructible<AppInfo>::value);
}

}  // namespace
