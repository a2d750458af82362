// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/MetadataReader.h"

#include "unit/controller/creator_fixture.h"

/// How a package's applications and metadata determine its record.
namespace {

using records::StoredPackages;
using support::HasLog;
using support::HasLogsInOrder;
using support::Texts;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char OTHER[] = "other";
constexpr char SECOND[] = "second";

class MetadataTest : public CreatorTest {
 protected:
  MetadataTest() {
    RegisterLayer<OTHER>();
    RegisterLayer<SECOND>();
    Forget();
  }

  bool Create(const Metadata& metadata) {
    fake::AddPackage(MakePackage("pkg", metadata));
    return Creator().CreateApp("pkg");
  }
  /// Destroys the record and creates it again.
  bool CreateAgain(const Metadata& metadata) {
    Creator().RemoveApp("pkg");
    Forget();
    return Create(metadata);
  }
  std::string TypeValue(const std::string& type) {
    return Find("pkg")->GetMetadata("orv_type", type);
  }
  std::string DataValue(const std::string& key) {
    return Find("pkg")->GetMetadata("orv_data", key);
  }
};

TEST_F(MetadataTest, AnOrdinaryPackageIsNoChannelBoundApp) {
  EXPECT_FALSE(Create({}));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rPackageID : pkg", "[Info] AppID : pkg.app",
                          "[Debug] [Package Version = 1.2.3]", "[Debug] pkg is not ORV Type."));
  EXPECT_THAT(Cached(), IsEmpty());
  EXPECT_THAT(StoredPackages(), IsEmpty());
  EXPECT_EQ(fake::CallCount("was_get_app_info_by_tizenid"), 0u);
}

TEST_F(MetadataTest, MetadataOfOthersIsPassedOver) {
  const std::string cut = METADATA_PREFIX.substr(0, METADATA_PREFIX.size() - 1);
  EXPECT_FALSE(Create({{"http://else/metadata/orv_type/other", "1"},
                       {"", "2"},
                       {cut, "3"},
                       {METADATA_PREFIX, "4"},
                       {METADATA_PREFIX + "orv_typ/other", "5"},
                       {"x" + TypeKey("other"), "6"}}));
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts(
                  {"[Debug] The metadata is not supported.[http://else/metadata/orv_type/other]",
                   "[Debug] The metadata is not supported.[]",
                   "[Debug] The metadata is not supported.[" + cut + "]",
                   "[Debug] The metadata is not supported.[" + METADATA_PREFIX + "]",
                   "[Debug] The metadata is not supported.[" + METADATA_PREFIX + "orv_typ/other]",
                   "[Debug] The metadata is not supported.[x" + TypeKey("other") + "]",
                   "[Debug] pkg is not ORV Type."})));
}

TEST_F(MetadataTest, ATypeAndItsDataMakeARecord) {
  EXPECT_TRUE(Create({{TypeKey("other"), "1"}, {DataKey("key"), "v"}}));
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Info] rPackageID : pkg", "[Info] AppID : pkg.app",
                  "[Info] packageID : pkg, sDataKey : other, sDataValue : 1",
                  "[Info] packageID : pkg, sDataKey : key, sDataValue : v",
                  "[Debug] [Package Version = 1.2.3]",
                  "[Debug] was_get_app_info_by_tizenid() failed.", "[Info] Target PackageID : pkg",
                  "[Info] [METADATA_ORV_TYPE] key : other, iter->second : 1",
                  "[Info] [METADATA_ORV_DATA] key : key, iter->second : v", "[Info] start"));
  EXPECT_EQ(TypeValue("other"), "1");
  EXPECT_EQ(DataValue("key"), "v");
  EXPECT_EQ(Find("pkg")->m_sVersion, "1.2.3");
  EXPECT_EQ(Find("pkg")->m_sWidgetID, "");
  EXPECT_THAT(StoredPackages(), ElementsAre("pkg"));
}

TEST_F(MetadataTest, TheSeparatorMayBeAnyCharacter) {
  EXPECT_TRUE(Create({{METADATA_PREFIX + "orv_type.other", "1"},
                      {METADATA_PREFIX + "orv_typexsecond", "2"},
                      {METADATA_PREFIX + "orv_data:key", "v"}}));
  EXPECT_EQ(TypeValue("other"), "1");
  EXPECT_EQ(TypeValue("second"), "2");
  EXPECT_EQ(DataValue("key"), "v");
}

TEST_F(MetadataTest, AKeyWithALaterCategoryIsCutAtTheFixedPosition) {
  EXPECT_FALSE(Create({{METADATA_PREFIX + "x/orv_type/other", "1"}}));
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] packageID : pkg, sDataKey : e/other, sDataValue : 1",
                                    "[Info] [METADATA_ORV_TYPE] key : e/other, iter->second : 1",
                                    "[ERROR] Cannot create app instance."})));
}

TEST_F(MetadataTest, AKeyWithBothWordsIsAType) {
  EXPECT_FALSE(Create({{METADATA_PREFIX + "orv_data/orv_type", "1"}}));
  EXPECT_THAT(fake::LogTexts(),
              HasLog("[Info] [METADATA_ORV_TYPE] key : orv_type, iter->second : 1"));
}

TEST_F(MetadataTest, AKeyThatEndsAfterItsWordIsAnErrorAndTheOthersStillCount) {
  EXPECT_TRUE(Create({{METADATA_PREFIX + "orv_type", "1"},
                      {METADATA_PREFIX + "orv_data", "2"},
                      {TypeKey("other"), "3"}}));
  EXPECT_THAT(fake::LogTexts(6),
              ElementsAre("[ERROR] exception : basic_string::substr: __pos (which is 9) > "
                          "this->size() (which is 8)",
                          "[ERROR] exception : basic_string::substr: __pos (which is 9) > "
                          "this->size() (which is 8)"));
  EXPECT_EQ(TypeValue("other"), "3");
}

TEST_F(MetadataTest, AKeyThatEndsAfterItsSeparatorIsAnEmptyName) {
  EXPECT_TRUE(Create({{METADATA_PREFIX + "orv_type/", "1"}, {TypeKey("other"), "2"}}));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] packageID : pkg, sDataKey : , sDataValue : 1"));
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("other", "orv_app"));
}

TEST_F(MetadataTest, DataWithoutATypeIsCollectedAndRefused) {
  EXPECT_FALSE(Create({{DataKey("key"), "v"}}));
  EXPECT_THAT(fake::LogTexts(6),
              ElementsAre("[ERROR] Cannot create app instance.",
                          "[ERROR] t_DecorateAppTypeByMatadata() return false. check the metadata "
                          "definitions in config.xml file.(App ID : pkg.app)",
                          "[ERROR] AddAppInfoToAppCache() return false."));
  EXPECT_THAT(Cached(), IsEmpty());
}

TEST_F(MetadataTest, AfterARefusalThePackageIsReadAgain) {
  EXPECT_FALSE(Create({{TypeKey("stranger"), "1"}, {DataKey("key"), "old"}}));
  EXPECT_TRUE(Create({{TypeKey("other"), "1"}, {DataKey("key"), "new"}}));
  EXPECT_EQ(DataValue("key"), "new");
}

TEST_F(MetadataTest, TheFirstValueOfAKeyStays) {
  EXPECT_TRUE(Create({{TypeKey("other"), "first"}, {TypeKey("other"), "second"}}));
  EXPECT_EQ(TypeValue("other"), "first");
}

TEST_F(MetadataTest, ASecondCreationKeepsWhatWasSeenFirstAndAddsWhatIsNew) {
  EXPECT_TRUE(Create({{TypeKey("other"), "first"}, {DataKey("key"), "old"}}));
  EXPECT_TRUE(CreateAgain({{TypeKey("other"), "changed"},
                           {TypeKey("second"), "new"},
                           {DataKey("key of other"), "new"}}));
  EXPECT_EQ(TypeValue("other"), "first");
  EXPECT_EQ(TypeValue("second"), "new");
  EXPECT_EQ(DataValue("key"), "old");
  EXPECT_EQ(DataValue("key of other"), "new");
}

// Applications.

TEST_F(MetadataTest, MetadataOfAllApplicationsIsCollected) {
  fake::Package package = MakePackage("pkg", {{TypeKey("other"), "1"}});
  package.apps.push_back(
      {"pkg.service", PACKAGE_INFO_SERVICEAPP, {{TypeKey("other"), "2"}, {DataKey("key"), "v"}}});
  fake::AddPackage(package);
  EXPECT_TRUE(Creator().CreateApp("pkg"));
  EXPECT_THAT(fake::LogTexts(),
              HasLogsInOrder(Texts({"[Info] AppID : pkg.app", "[Info] ServiceID : pkg.service"})));
  EXPECT_EQ(Find("pkg")->m_sAppID, "pkg.app");
  EXPECT_EQ(Find("pkg")->m_sServiceID, "pkg.service");
  EXPECT_EQ(TypeValue("other"), "1");
  EXPECT_EQ(DataValue("key"), "v");
  EXPECT_EQ(fake::OpenHandles("app_info"), 0u);
  EXPECT_EQ(fake::OpenHandles("package_info"), 0u);
}

TEST_F(MetadataTest, OfSeveralApplicationsOfAKindTheLastOneCounts) {
  fake::Package package = MakePackage("pkg", {{TypeKey("other"), "1"}});
  package.apps.push_back({"pkg.app2", PACKAGE_INFO_UIAPP, {}});
  package.apps.push_back({"pkg.s1", PACKAGE_INFO_SERVICEAPP, {}});
  package.apps.push_back({"pkg.s2", PACKAGE_INFO_SERVICEAPP, {}});
  fake::AddPackage(package);
  EXPECT_TRUE(Creator().CreateApp("pkg"));
  EXPECT_EQ(Find("pkg")->m_sAppID, "pkg.app2");
  EXPECT_EQ(Find("pkg")->m_sServiceID, "pkg.s2");
}

TEST_F(MetadataTest, AServiceWithoutAUserInterfaceIsARecordWithoutAnAppId) {
  fake::Package package;
  package.id = "pkg";
  package.apps.push_back({"pkg.service", PACKAGE_INFO_SERVICEAPP, {{TypeKey("other"), "1"}}});
  fake::AddPackage(package);
  EXPECT_TRUE(Creator().CreateApp("pkg"));
  EXPECT_EQ(Find("pkg")->m_sAppID, "");
  EXPECT_EQ(Find("pkg")->m_sWidgetID, "");
  EXPECT_THAT(fake::CallTexts({"was_get_app_info_by_tizenid"}),
              ElementsAre("was_get_app_info_by_tizenid() = -1"));
}

TEST_F(MetadataTest, TheWidgetIdIsTheWebAppServices) {
  fake::WasApp app;
  app.package = "pkg";
  app.app = "pkg.app";
  app.widget = "w";
  fake::AddWasApp(app);
  EXPECT_TRUE(Create({{TypeKey("other"), "1"}}));
  EXPECT_EQ(Find("pkg")->m_sWidgetID, "w");
}

TEST_F(MetadataTest, AnApplicationOfAnotherKindNamesNothingButItsMetadataCounts) {
  fake::Package package = MakePackage("pkg", {{TypeKey("other"), "1"}});
  package.apps[0].component = PACKAGE_INFO_ALLAPP;
  fake::AddPackage(package);
  EXPECT_TRUE(Creator().CreateApp("pkg"));
  EXPECT_EQ(Find("pkg")->m_sAppID, "");
  EXPECT_EQ(Find("pkg")->m_sServiceID, "");
}

TEST_F(MetadataTest, APackageWithoutApplicationsIsNoChannelBoundApp) {
  fake::Package package;
  package.id = "pkg";
  fake::AddPackage(package);
  EXPECT_FALSE(Creator().CreateApp("pkg"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] pkg is not ORV Type."));
}

// Failures of the platform.

TEST_F(MetadataTest, AnUnknownPackageIsAFailure) {
  EXPECT_FALSE(Creator().CreateApp("pkg"));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rPackageID : pkg",
                          "[ERROR] package_manager_get_package_info() failed. [ret : -18153361]",
                          "[ERROR] Get_PackageInfo() return false.",
                          "[Debug] ExtractAppInfoFromMetadata() return false."));
}

TEST_F(MetadataTest, AFailedWalkOverTheApplicationsIsAFailure) {
  fake::Fail("package_info_foreach_app_from_package", -5);
  EXPECT_FALSE(Create({{TypeKey("other"), "1"}}));
  EXPECT_THAT(fake::LogTexts(6),
              ElementsAre("[ERROR] package_info_foreach_app_from_package() failed. [ret : -5]",
                          "[ERROR] Get_PackageInfo() return false."));
  EXPECT_EQ(fake::OpenHandles("package_info"), 0u);
  EXPECT_EQ(fake::CallCount("package_info_get_version"), 0u);
}

TEST_F(MetadataTest, AMissingVersionIsAFailure) {
  fake::Fail("package_info_get_version", -12);
  EXPECT_FALSE(Create({{TypeKey("other"), "1"}}));
  EXPECT_THAT(
      fake::LogTexts(6),
      ElementsAre("[ERROR] package_info_get_version() failed. [ret : -12, version = (null)]",
                  "[ERROR] Get_PackageInfo() return false."));
  EXPECT_EQ(fake::OpenHandles("package_info"), 0u);
}

TEST_F(MetadataTest, ANullVersionIsAFailureWhateverTheResult) {
  fake::Fail("package_info_get_version", 0);
  EXPECT_FALSE(Create({{TypeKey("other"), "1"}}));
  EXPECT_THAT(fake::LogTexts(6),
              Contains("[ERROR] package_info_get_version() failed. [ret : 0, version = (null)]"));
  EXPECT_THAT(Cached(), IsEmpty());
}

TEST_F(MetadataTest, AFailureForgetsWhatWasSeenOfThePackage) {
  EXPECT_TRUE(Create({{TypeKey("other"), "first"}}));
  Creator().RemoveApp("pkg");
  fake::Fail("package_info_get_version");
  EXPECT_FALSE(Create({{TypeKey("other"), "changed"}}));
  EXPECT_TRUE(Create({{TypeKey("other"), "changed"}}));
  EXPECT_EQ(TypeValue("other"), "changed");
}

TEST_F(MetadataTest, ASecondApplicationThatCannotBeReadEndsTheWalkOnly) {
  fake::Package package = MakePackage("pkg", {{TypeKey("other"), "1"}});
  package.apps.push_back({"pkg.app2", PACKAGE_INFO_UIAPP, {{TypeKey("second"), "2"}}});
  package.apps.push_back({"pkg.app3", PACKAGE_INFO_UIAPP, {{DataKey("key"), "v"}}});
  fake::AddPackage(package);
  fake::Fail("app_info_create", -12, 1, 1);
  EXPECT_TRUE(Creator().CreateApp("pkg"));
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] app_info_create() failed. [ret : -12]"));
  EXPECT_EQ(fake::CallCount("app_info_create"), 2u);
  // Its id was stored before its metadata was read.
  EXPECT_EQ(Find("pkg")->m_sAppID, "pkg.app2");
  EXPECT_EQ(DataValue("key"), "");
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("other", "orv_app"));
}

TEST_F(MetadataTest, AnApplicationWhoseMetadataCannotBeReadIsPassedOver) {
  fake::Package package = MakePackage("pkg", {{TypeKey("other"), "1"}});
  package.apps.push_back({"pkg.app2", PACKAGE_INFO_UIAPP, {{TypeKey("second"), "2"}}});
  fake::AddPackage(package);
  fake::Fail("app_info_foreach_metadata", -5);
  EXPECT_TRUE(Creator().CreateApp("pkg"));
  EXPECT_THAT(fake::LogTexts(6),
              ElementsAre("[ERROR] app_info_foreach_metadata() failed. [ret : -5]"));
  EXPECT_EQ(fake::OpenHandles("app_info"), 0u);
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("second", "orv_app"));
}

// The callbacks alone.

TEST_F(MetadataTest, MetadataOfAPackageThatIsNotBeingReadIsRefused) {
  AppBaseInfo info = records::Info("stranger");
  EXPECT_TRUE(ORVAppCreator::AppInfoMetadataCB(TypeKey("other").c_str(), "1", &info));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] packageID : stranger, sDataKey : other, sDataValue : 1",
                          "[Info] Invalid PackageID[stranger]"));
}

TEST_F(MetadataTest, AMetadataEntryWithoutAValueIsAnErrorAndTheWalkGoesOn) {
  AppBaseInfo info = records::Info("pkg");
  EXPECT_TRUE(ORVAppCreator::AppInfoMetadataCB(TypeKey("other").c_str(), nullptr, &info));
  EXPECT_TRUE(ORVAppCreator::AppInfoMetadataCB(nullptr, "1", &info));
  const std::string text = "[ERROR] A metadata entry of pkg has no key or no value.";
  EXPECT_THAT(fake::LogTexts(), ElementsAre(text, text));
}

TEST_F(MetadataTest, AnApplicationWithoutAnIdEndsTheWalk) {
  AppBaseInfo info = records::Info("pkg");
  EXPECT_FALSE(ORVAppCreator::PackageInfoAppCB(PACKAGE_INFO_UIAPP, nullptr, &info));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] An application of the package has no id."));
  EXPECT_EQ(info.m_sAppID, "pkg.app");
  EXPECT_EQ(fake::CallCount("app_info_create"), 0u);
}

// Large amounts.

TEST_F(MetadataTest, TenThousandEntriesAreRead) {
  const std::string longText = std::string(64 * 1024, 'x') + "\"\n\xc3\xa4\xf0\x9f\x93\xba";
  Metadata metadata;
  for (int i = 0; i < 10000; ++i) {
    metadata.emplace_back(DataKey("k'\"\n\xff" + std::to_string(i)), "v'\"\n\xff");
  }
  metadata.emplace_back(TypeKey("other"), "\"1\"\n");
  metadata.emplace_back(DataKey("key"), longText);
  EXPECT_TRUE(Create(metadata));
  EXPECT_EQ(DataValue("key"), longText);
  EXPECT_EQ(TypeValue("other"), "\"1\"\n");
  EXPECT_THAT(StoredPackages(), ElementsAre("pkg"));
}

}  // namespace
