// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVAppCreator.h"

#include "controller/ORVScheduler.h"
#include "unit/controller/allocations.h"
#include "unit/controller/creator_fixture.h"

namespace {

using records::Info;
using records::Journal;
using records::StoredPackages;
using records::StoreRow;
using support::HasLog;
using support::HasLogsInOrder;
using support::Texts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr char FEEDER_STANDARD[] = "ch_feeder_standard";
constexpr char FEEDER_CUSTOM[] = "ch_feeder_custom";
constexpr char UI_STANDARD[] = "custom_ui_standard";
constexpr char UI_EXTENDED[] = "custom_ui_extended";
constexpr char OTHER[] = "other";
constexpr char VARIABLES[] = "{\"orv_type\":{\"ch_feeder_standard\":\"1\"}}\n";

using ORVAppCreatorTest = CreatorTest;

fake::WasApp MakeWasApp(const std::string& package, int gone = 0) {
  fake::WasApp app;
  app.package = package;
  app.app = package + ".app";
  app.widget = package + "-widget";
  app.gone = gone;
  return app;
}

// The instance.

TEST_F(ORVAppCreatorTest, ThereIsOneInstance) {
  EXPECT_EQ(ORVAppCreator::GetInstance(), ORVAppCreator::GetInstance());
}

TEST_F(ORVAppCreatorTest, TheInstanceOpensTheStoreAndLoadsNothing) {
  StoreRow("pkg", VARIABLES);
  Creator();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] DB integrity check OK"));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] Factory Reset")));
  EXPECT_THAT(StoredPackages(), ElementsAre("pkg"));
  EXPECT_THAT(Cached(), IsEmpty());
}

TEST_F(ORVAppCreatorTest, AResetOfTheTvStartsWithAnEmptyStore) {
  StoreRow("pkg", VARIABLES);
  fake::StoreKey("db/factory/service_reset_count", 1);
  Creator();
  EXPECT_THAT(
      fake::LogTexts(),
      HasLogsInOrder(Texts({"[Debug] TV is restarted by facotry/service reset.",
                            "[Debug] Factory Reset", "[Info] Start", "[Debug] length = -1"})));
  EXPECT_THAT(StoredPackages(), IsEmpty());
}

TEST_F(ORVAppCreatorTest, AResetLeavesTheOtherFilesAlone) {
  const std::string other = records::StorePath() + ".other";
  support::WriteFile(other, "content");
  fake::StoreKey("db/factory/factory_reset_count", 2);
  Creator();
  EXPECT_EQ(support::ReadFile(other), "content");
  EXPECT_EQ(support::ReadFile("/opt/usr/apps/com.kalmora.tv.orv-enabler/data/reset_count_info.txt"),
            "{\"factory_reset_count\":2,\"service_reset_count\":0}\n");
}

TEST_F(ORVAppCreatorTest, AResetLeavesPackagedDataSettingsKeysAndChannelsAlone) {
  const std::string shared = "/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data/";
  const std::string banner = "{\"CustomBanner\":{\"app_id\":\"pkg.app\"}}\n";
  support::WriteFile(shared + "hbbtv_app/pkg/app_type_file.txt", "list");
  support::WriteFile(shared + "metadata/pkg/channel.json", "channels");
  fake::StoreKey("db/orv_channel/custom_ui_type", banner);
  fake::StoreKey("db/factory/service_reset_count", 1);
  fake::AddChannel("{\"pkg_id\":\"pkg\"}");
  StoreRow("pkg", VARIABLES);
  Creator();
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] Factory Reset"));
  EXPECT_THAT(support::ListTree(shared),
              ElementsAre("hbbtv_app/", "hbbtv_app/pkg/", "hbbtv_app/pkg/app_type_file.txt",
                          "metadata/", "metadata/pkg/", "metadata/pkg/channel.json"));
  EXPECT_EQ(fake::StringKey("db/orv_channel/custom_ui_type"), banner);
  EXPECT_THAT(fake::CallTexts({"vconf_set_str", "vconf_set_int"}), IsEmpty());
  EXPECT_THAT(fake::Channels(), testing::SizeIs(1));
  EXPECT_THAT(fake::ChannelRequests(), IsEmpty());
}

TEST_F(ORVAppCreatorTest, ATypeIsSupportedOnceHoweverOftenItIsNamed) {
  const std::string type = "a name that is too long to stand in a string without memory of its own";
  Creator().AddSupportedAppType(type);
  allocations::FailNext();
  Creator().AddSupportedAppType(type);
  EXPECT_TRUE(allocations::CancelFailure()) << "a second entry allocated memory";
  EXPECT_TRUE(ORVAppCreator::IsSupportedAppType(type));
}

// Layers.

TEST_F(ORVAppCreatorTest, ALayerIsPutAroundTheRecord) {
  RegisterLayer<OTHER>();
  AppInfo* record = new ORVAppInfo(Info("pkg"));
  AppInfo* inner = record;
  Creator().AddAppTypeDecorator(record, "other", "value");
  const records::Owned<AppInfo> owner(record);
  EXPECT_EQ(record, Made<OTHER>::s_layer);
  EXPECT_EQ(Made<OTHER>::s_layer->Inner(), inner);
  EXPECT_EQ(record->GetMetadata("orv_type", "other"), "value");
}

TEST_F(ORVAppCreatorTest, AnUnknownTypeChangesNothing) {
  const auto record = records::MakeRecord(Info("pkg"));
  AppInfo* head = record.get();
  Creator();
  Forget();
  Creator().AddAppTypeDecorator(head, "stranger", "value");
  EXPECT_EQ(head, record.get());
  EXPECT_THAT(fake::LogTexts(4), ElementsAre("[Info] Invalid AppType : stranger"));
}

TEST_F(ORVAppCreatorTest, TheCustomFeederAloneReceivesTheSchedulersEntry) {
  RegisterLayer<FEEDER_CUSTOM>();
  RegisterLayer<FEEDER_STANDARD>();
  Made<FEEDER_STANDARD>::s_callback = &ORVScheduler::RequestEvent;
  AppInfo* record = new ORVAppInfo(Info("pkg"));
  Creator().AddAppTypeDecorator(record, "ch_feeder_custom", "1");
  Creator().AddAppTypeDecorator(record, "ch_feeder_standard", "1");
  const records::Owned<AppInfo> owner(record);
  EXPECT_EQ(Made<FEEDER_CUSTOM>::s_callback, &ORVScheduler::RequestEvent);
  EXPECT_EQ(Made<FEEDER_STANDARD>::s_callback, nullptr);
}

// A record from metadata.

TEST_F(ORVAppCreatorTest, ARecordIsEnteredAndStoredWithItsData) {
  RegisterLayer<OTHER>();
  Forget();
  EXPECT_TRUE(Creator().AddAppInfoToAppCache(
      Info("pkg"), {{"orv_type", {{"other", "1"}}}, {"orv_data", {{"key", "v"}, {"zzz", "x"}}}},
      true));
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Info] Target PackageID : pkg",
                  "[Info] [METADATA_ORV_TYPE] key : other, iter->second : 1",
                  "[Info] [METADATA_ORV_DATA] key : key, iter->second : v",
                  "[Info] [METADATA_ORV_DATA] key : zzz, iter->second : x", "[Info] start"));
  ASSERT_NE(Find("pkg"), nullptr);
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_data", "key"), "v");
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_data", "zzz"), "");
  EXPECT_EQ(Find("pkg")->m_sServiceID, "pkg.service");
  EXPECT_THAT(records::QueryStore("SELECT variables FROM appinfo"),
              ElementsAre(ElementsAre("{\"orv_data\":{\"key\":\"v\",\"key of other\":\"\"},"
                                      "\"orv_type\":{\"other\":\"1\"}}\n")));
}

TEST_F(ORVAppCreatorTest, ARecordFromTheStoreIsNotWritten) {
  RegisterLayer<OTHER>();
  EXPECT_TRUE(Creator().AddAppInfoToAppCache(Info("pkg"), {{"orv_type", {{"other", "1"}}}}, false));
  EXPECT_THAT(Cached(), ElementsAre("pkg"));
  EXPECT_THAT(StoredPackages(), IsEmpty());
}

TEST_F(ORVAppCreatorTest, LayersStandInTheOrderOfTheirNamesWhateverTheMetadatasOrder) {
  RegisterLayer<FEEDER_STANDARD>();
  RegisterLayer<FEEDER_CUSTOM>();
  RegisterLayer<UI_STANDARD>();
  RegisterLayer<UI_EXTENDED>();
  fake::AddPackage(MakePackage("pkg", {{TypeKey("custom_ui_standard"), "1"},
                                       {TypeKey("ch_feeder_standard"), "2"},
                                       {TypeKey("custom_ui_extended"), "3"},
                                       {TypeKey("ch_feeder_custom"), "4"}}));
  EXPECT_TRUE(Creator().CreateApp("pkg"));
  EXPECT_EQ(Find("pkg")->GetAppType(), "custom_ui_standard");
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("custom_ui_standard", "custom_ui_extended",
                                            "ch_feeder_standard", "ch_feeder_custom", "orv_app"));
}

TEST_F(ORVAppCreatorTest, OfTwoTypesTheUserInterfaceIsOutsideTheFeeder) {
  RegisterLayer<FEEDER_STANDARD>();
  RegisterLayer<UI_STANDARD>();
  Creator().AddAppInfoToAppCache(
      Info("pkg"), {{"orv_type", {{"ch_feeder_standard", "1"}, {"custom_ui_standard", "2"}}}},
      true);
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("custom_ui_standard", "ch_feeder_standard", "orv_app"));
}

TEST_F(ORVAppCreatorTest, TypesThatNobodyRegisteredAreSkipped) {
  RegisterLayer<OTHER>();
  EXPECT_TRUE(Creator().AddAppInfoToAppCache(
      Info("pkg"), {{"orv_type", {{"aaa", "1"}, {"other", "2"}, {"zzz", "3"}}}}, false));
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("other", "orv_app"));
}

TEST_F(ORVAppCreatorTest, WithoutAKnownTypeThereIsNoRecord) {
  Creator();
  Forget();
  EXPECT_FALSE(
      Creator().AddAppInfoToAppCache(Info("pkg"), {{"orv_type", {{"stranger", "1"}}}}, true));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] Target PackageID : pkg",
                          "[Info] [METADATA_ORV_TYPE] key : stranger, iter->second : 1",
                          "[ERROR] Cannot create app instance.",
                          "[ERROR] t_DecorateAppTypeByMatadata() return false. check the metadata "
                          "definitions in config.xml file.(App ID : pkg.app)"));
  EXPECT_THAT(Cached(), IsEmpty());
}

TEST_F(ORVAppCreatorTest, DataAloneMakesNoRecord) {
  EXPECT_FALSE(Creator().AddAppInfoToAppCache(Info("pkg"), {{"orv_data", {{"key", "v"}}}}, true));
  EXPECT_FALSE(Creator().AddAppInfoToAppCache(Info("pkg"), {}, true));
  EXPECT_THAT(Cached(), IsEmpty());
}

TEST_F(ORVAppCreatorTest, ARecordThatTheStoreRefusesStaysInTheCache) {
  RegisterLayer<OTHER>();
  EXPECT_FALSE(
      Creator().AddAppInfoToAppCache(Info("pkg"), {{"orv_type", {{"other", "it's"}}}}, true));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] insert error.", "[ERROR] insert error.",
                                             "[ERROR] AppInfoDB::InsertNewRecord() return false.",
                                             "[ERROR] AppInfoCache::AddAppInfo() return failed."));
  EXPECT_THAT(Cached(), ElementsAre("pkg"));
  EXPECT_THAT(StoredPackages(), IsEmpty());
}

TEST_F(ORVAppCreatorTest, ALayerThatCannotBeMadeReleasesTheChainInsideIt) {
  RegisterLayer<FEEDER_CUSTOM>();
  RegisterLayer<FEEDER_STANDARD>();
  Creator().RegisterAppType(OTHER,
                            {[](AppInfo*, const std::string&, RequestEventCallback) -> AppInfo* {
                               throw std::runtime_error("no such layer");
                             },
                             records::Layer::Release});
  Forget();
  const MetadataMap types = {
      {"orv_type", {{"ch_feeder_custom", "1"}, {"ch_feeder_standard", "1"}, {"other", "1"}}}};
  EXPECT_THROW(Creator().AddAppInfoToAppCache(Info("pkg"), types, true), std::runtime_error);
  EXPECT_THAT(Journal(), ElementsAre("ch_feeder_standard release", "ch_feeder_custom release"));
  EXPECT_THAT(Cached(), IsEmpty());
}

// Removal.

TEST_F(ORVAppCreatorTest, ARemovedAppIsGoneFromCacheAndStoreAndItsChainIsReleased) {
  RegisterLayer<OTHER>();
  RegisterLayer<FEEDER_STANDARD>();
  Creator().AddAppInfoToAppCache(
      Info("pkg"), {{"orv_type", {{"ch_feeder_standard", "1"}, {"other", "1"}}}}, true);
  Forget();
  Creator().RemoveApp("pkg");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rPackageID : pkg", "[Info] start"));
  EXPECT_THAT(Cached(), IsEmpty());
  EXPECT_THAT(StoredPackages(), IsEmpty());
  EXPECT_THAT(Journal(), ElementsAre("other release", "ch_feeder_standard release"));
}

TEST_F(ORVAppCreatorTest, RemovalOfAnUnknownPackageIsHarmless) {
  Creator();
  Forget();
  Creator().RemoveApp("pkg");
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rPackageID : pkg", "[ERROR] Cannot find target AppInfo."));
}

TEST_F(ORVAppCreatorTest, ARecordOfAnUnregisteredTypeStaysUndestroyed) {
  Creator();
  const records::Owned<ORVAppInfo> record = records::MakeRecord(Info("pkg"));
  Cache().AddAppInfo("pkg", record.get(), false);
  Creator().RemoveApp("pkg");
  EXPECT_THAT(Cached(), IsEmpty());
  EXPECT_EQ(record->m_sPackageID, "pkg");
}

// Reconciliation with the web-app service.

class ValidationTest : public CreatorTest {
 protected:
  ValidationTest() {
    RegisterLayer<OTHER>();
    for (const char* package : {"absent", "gone", "here"}) {
      Creator().AddAppInfoToAppCache(Info(package), {{"orv_type", {{"other", "1"}}}}, true);
    }
    Forget();
  }
};

TEST_F(ValidationTest, AppsThatTheServiceDoesNotHoldAreRemovedWithoutBeingStopped) {
  fake::AddWasApp(MakeWasApp("here"));
  fake::AddWasApp(MakeWasApp("gone", 1));
  Creator().RunValidationTesting();
  EXPECT_THAT(Cached(), ElementsAre("here"));
  EXPECT_THAT(StoredPackages(), ElementsAre("here"));
  EXPECT_THAT(Journal(), ElementsAre("other release", "other release"));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] packageID : absent", "[Info] Remove absent App.",
                          "[Info] rPackageID : absent", "[Info] start", "[Info] packageID : gone",
                          "[Info] Remove gone App.", "[Info] rPackageID : gone", "[Info] start",
                          "[Info] packageID : here"));
}

TEST_F(ValidationTest, AnEntryOfAnotherKindDoesNotKeepAnApp) {
  fake::WasApp app = MakeWasApp("here");
  app.kind = 1;
  fake::AddWasApp(app);
  Creator().RunValidationTesting();
  EXPECT_THAT(Cached(), IsEmpty());
}

TEST_F(ValidationTest, AFailingServiceLeavesAllRecordsAlone) {
  fake::Fail("was_get_all_app_list");
  Creator().RunValidationTesting();
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] was_get_all_app_list failed.",
                                            "[Debug] WASUtils::GetAllWASAppList() return false."));
  EXPECT_THAT(Cached(), ElementsAre("absent", "gone", "here"));
}

TEST_F(ORVAppCreatorTest, ReconcilingAnEmptyCacheRemovesNothing) {
  Creator();
  fake::AddWasApp(MakeWasApp("here"));
  Forget();
  Creator().RunValidationTesting();
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

}  // namespace
