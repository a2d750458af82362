// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/AppTypeUpdate.h"

#include "controller/ORVScheduler.h"
#include "unit/controller/creator_fixture.h"

/// How a record's chain is adapted to an updated package.
namespace {

using records::Info;
using records::Journal;
using records::Layer;
using records::Owned;
using records::QueryStore;
using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

constexpr char A[] = "a";
constexpr char B[] = "b";
constexpr char C[] = "c";

class UpdateTest : public CreatorTest {
 protected:
  UpdateTest() {
    RegisterLayer<A>();
    RegisterLayer<B>();
    RegisterLayer<C>();
    Forget();
  }

  /// Puts a record of these types into cache and store, as after a restart: the package's metadata
  /// has not been read.
  void Have(const std::map<std::string, std::string>& types,
            const std::map<std::string, std::string>& data = {}) {
    Creator().AddAppInfoToAppCache(Info("pkg"), {{"orv_type", types}, {"orv_data", data}}, true);
    Forget();
  }
  UpdateResult Update(const Metadata& metadata) {
    fake::AddPackage(MakePackage("pkg", metadata));
    return Creator().UpdateApp("pkg");
  }
  /// Only the lines about differences, in order.
  static std::vector<std::string> Differences() {
    std::vector<std::string> lines;
    for (const std::string& text : fake::LogTexts()) {
      if (text.find("first : ") != std::string::npos && text.find("rTargetType") == text.npos) {
        lines.push_back(text);
      }
    }
    return lines;
  }
  static std::string Variables() {
    return QueryStore("SELECT variables FROM appinfo WHERE package_id='pkg'").at(0).at(0);
  }
};

// Results.

TEST_F(UpdateTest, APackageWithoutARecordIsToBeCreated) {
  EXPECT_EQ(Update({{TypeKey("a"), "1"}}), UPDATE_RESULT_CREATE);
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rPackageID : pkg", "[Debug] Cannot find target AppInfo."));
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(UpdateTest, ThePlatformsFailureIsAFailureAndChangesNothing) {
  Have({{"a", "1"}});
  fake::Fail("package_info_get_version");
  EXPECT_EQ(Update({{TypeKey("b"), "1"}}), UPDATE_RESULT_FAIL);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] ExtractAppInfoFromMetadata() return false."));
  EXPECT_THAT(Differences(), IsEmpty());
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("a", "orv_app"));
}

TEST_F(UpdateTest, APackageThatLostItsMetadataIsToBeRemoved) {
  Have({{"a", "1"}});
  EXPECT_EQ(Update({}), UPDATE_RESULT_REMOVE);
  EXPECT_EQ(fake::LogTexts().back(), "[Debug] [Package Version = 1.2.3]");
  EXPECT_THAT(Cached(), ElementsAre("pkg"));
}

TEST_F(UpdateTest, APackageWithDataAndWithoutATypeIsToBeRemoved) {
  Have({{"a", "1"}});
  EXPECT_EQ(Update({{DataKey("key"), "v"}}), UPDATE_RESULT_REMOVE);
  EXPECT_THAT(Differences(), IsEmpty());
}

TEST_F(UpdateTest, ARecordWithoutTypesIsRemovedAndToBeCreated) {
  const Owned<ORVAppInfo> record = records::MakeRecord(Info("pkg"));
  Cache().AddAppInfo("pkg", record.get(), true);
  EXPECT_EQ(Update({{TypeKey("a"), "1"}}), UPDATE_RESULT_CREATE);
  EXPECT_THAT(Cached(), IsEmpty());
  EXPECT_THAT(records::StoredPackages(), IsEmpty());
  EXPECT_TRUE(Creator().CreateApp("pkg"));
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("a", "orv_app"));
}

TEST_F(UpdateTest, EqualTypesAreAllStagedAgain) {
  Have({{"a", "1"}, {"b", "2"}});
  EXPECT_EQ(Update({{TypeKey("b"), "2"}, {TypeKey("a"), "1"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Differences(), ElementsAre("[Debug] [Intersection] first : a, second : 1",
                                         "[Debug] [Intersection] first : b, second : 2"));
  EXPECT_THAT(Made<A>::s_layer->StagedType(), Pair("a", "1"));
  EXPECT_THAT(Made<B>::s_layer->StagedType(), Pair("b", "2"));
  EXPECT_EQ(Find("pkg"), Made<B>::s_layer);
  EXPECT_THAT(Journal(), IsEmpty());
}

TEST_F(UpdateTest, AChangedValueStaysAttachedAndIsStaged) {
  Have({{"a", "old"}});
  EXPECT_EQ(Update({{TypeKey("a"), "new"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Differences(), ElementsAre("[Debug] [Intersection] first : a, second : new"));
  EXPECT_THAT(Made<A>::s_layer->AppliedType(), Pair("a", "old"));
  EXPECT_THAT(Made<A>::s_layer->StagedType(), Pair("a", "new"));
}

TEST_F(UpdateTest, TheStepsComeInTheirOrder) {
  Have({{"a", "1"}, {"b", "2"}});
  EXPECT_EQ(Update({{TypeKey("b"), "new"}, {TypeKey("c"), "3"}, {DataKey("key"), "v"}}),
            UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Differences(), ElementsAre("[Debug] [Removable] first : a, second : 1",
                                         "[Debug] [Additional] first : c, second : 3",
                                         "[Debug] [Intersection] first : b, second : new",
                                         "[Debug] [Intersection] first : key, second : v"));
  Cache().RemoveAppInfo("pkg");
  const Owned<Layer> owner(Made<C>::s_layer);
}

// Removed types.

TEST_F(UpdateTest, AnInnerLayerGoesAndTheCacheKeepsItsHead) {
  Have({{"a", "1"}, {"b", "2"}});
  const std::string before = Variables();
  EXPECT_EQ(Update({{TypeKey("b"), "2"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Journal(), ElementsAre("a release"));
  EXPECT_EQ(Find("pkg"), Made<B>::s_layer);
  // The row is written after the update's operation has run.
  EXPECT_EQ(Variables(), before);
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("b", "orv_app"));
}

TEST_F(UpdateTest, WhenTheHeadGoesTheCacheHoldsTheNewOneBeforeTheOldIsDestroyed) {
  Have({{"a", "1"}, {"b", "2"}});
  AppInfo* cached = nullptr;
  std::string stored;
  records::ReleaseHook() = [&](AppInfo*) {
    cached = Find("pkg");
    stored = Variables();
  };
  EXPECT_EQ(Update({{TypeKey("a"), "1"}}), UPDATE_RESULT_UPDATE);
  records::ReleaseHook() = nullptr;
  EXPECT_THAT(Journal(), ElementsAre("b release"));
  EXPECT_EQ(cached, Made<A>::s_layer);
  EXPECT_EQ(stored, "{\"orv_data\":{\"key\":\"\",\"key of a\":\"\"},\"orv_type\":{\"a\":\"1\"}}\n");
  EXPECT_EQ(Find("pkg"), Made<A>::s_layer);
}

TEST_F(UpdateTest, SeveralLayersGoInTheOrderOfTheirNames) {
  Have({{"a", "1"}, {"b", "2"}, {"c", "3"}});
  EXPECT_EQ(Update({{TypeKey("b"), "2"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Journal(), ElementsAre("a release", "c release"));
  EXPECT_EQ(Find("pkg"), Made<B>::s_layer);
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("b", "orv_app"));
}

TEST_F(UpdateTest, WhenAllTypesGoTheCacheIsLeftWithTheBareRecord) {
  Have({{"a", "1"}, {"b", "2"}});
  EXPECT_EQ(Update({{TypeKey("stranger"), "1"}}), UPDATE_RESULT_UPDATE);
  EXPECT_EQ(Find("pkg")->GetAppType(), "orv_app");
  EXPECT_EQ(Variables(), "null\n");
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("orv_app"));
}

TEST_F(UpdateTest, ALayerOfAnUnregisteredTypeEndsTheRemovalAndStaysUndestroyed) {
  auto* inner = new Layer(new ORVAppInfo(Info("pkg")), "a", "1");
  auto* unregistered = new Layer(inner, "aa", "1");
  auto* head = new Layer(unregistered, "b", "1");
  Cache().AddAppInfo("pkg", head, true);
  Forget();
  EXPECT_EQ(Update({{TypeKey("a"), "new"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] Invalid AppTypeStr : aa"));
  EXPECT_THAT(Differences(), ElementsAre("[Debug] [Removable] first : aa, second : 1",
                                         "[Debug] [Intersection] first : a, second : new"));
  EXPECT_THAT(Journal(), IsEmpty());
  EXPECT_EQ(head->Inner(), inner);
  EXPECT_EQ(unregistered->Inner(), nullptr);
  EXPECT_THAT(inner->StagedType(), Pair("a", "new"));
  const Owned<Layer> detached(unregistered);
}

TEST_F(UpdateTest, AnUnregisteredHeadIsReplacedInTheCacheAllTheSame) {
  auto* inner = new Layer(new ORVAppInfo(Info("pkg")), "a", "1");
  const Owned<Layer> unregistered(new Layer(inner, "unregistered", "1"));
  Cache().AddAppInfo("pkg", unregistered.get(), true);
  EXPECT_EQ(Update({{TypeKey("a"), "1"}}), UPDATE_RESULT_UPDATE);
  EXPECT_EQ(Find("pkg"), inner);
  EXPECT_EQ(unregistered->Inner(), nullptr);
}

/// A record that names types for which it has no layer.
class Boaster final : public AppInfo {
 public:
  Boaster() { m_sPackageID = "pkg"; }
  ~Boaster() = default;
  void SetMetadata(const std::string& rType, const std::pair<std::string, std::string>& rKeyValue,
                   bool bUpdatable) override {
    m_sets.push_back(rType + " " + rKeyValue.first + (bUpdatable ? " staged" : " applied"));
  }
  std::string GetMetadata(const std::string&, const std::string&) const override { return ""; }
  void GetAllMetadata(MetadataMap& rMetadata) const override {
    rMetadata["orv_type"] = {{"a", "1"}, {"b", "2"}};
  }
  void RemoveMetadata(const std::string&, const std::string&) override {}
  AppInfo* ExtractTargetAppType(const std::string& rTargetType, AppInfo**) override {
    m_extractions.push_back(rTargetType);
    return nullptr;
  }
  const std::string& GetAppType() const override { return m_type; }
  ReleaseFunction GetReleaseFunction() const override { return nullptr; }

  std::vector<std::string> m_sets;
  std::vector<std::string> m_extractions;

 private:
  const std::string m_type = "boaster";
};

TEST_F(UpdateTest, ATypeThatIsNoLayerIsPassedOverSilently) {
  Boaster record;
  Cache().AddAppInfo("pkg", &record, false);
  EXPECT_EQ(Update({{TypeKey("stranger"), "1"}, {DataKey("key"), "v"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(record.m_extractions, ElementsAre("a", "b"));
  EXPECT_THAT(fake::LogTexts(6), IsEmpty());
  EXPECT_THAT(record.m_sets, ElementsAre("orv_data key staged"));
  EXPECT_EQ(Find("pkg"), &record);
}

// Added types.

TEST_F(UpdateTest, ANewLayerIsStagedAndNeitherTheCacheNorTheUpdateGoesThroughIt) {
  Have({{"a", "1"}});
  const std::string before = Variables();
  EXPECT_EQ(Update({{TypeKey("a"), "1"}, {TypeKey("b"), "2"}, {DataKey("key"), "v"}}),
            UPDATE_RESULT_UPDATE);
  Layer* added = Made<B>::s_layer;
  EXPECT_EQ(added->Inner(), Made<A>::s_layer);
  EXPECT_THAT(added->AppliedType(), Pair("b", "2"));
  EXPECT_THAT(added->StagedType(), Pair("b", "2"));
  EXPECT_EQ(added->Staged().at("key"), "");
  EXPECT_EQ(Made<A>::s_layer->Staged().at("key"), "v");
  EXPECT_EQ(Find("pkg"), Made<A>::s_layer);
  EXPECT_EQ(Variables(), before);
  Cache().RemoveAppInfo("pkg");
  const Owned<Layer> owner(added);
}

constexpr char CUSTOM[] = "ch_feeder_custom";

TEST_F(UpdateTest, OnlyANewCustomFeederIsGivenTheSchedulersDoor) {
  RegisterLayer<CUSTOM>();
  Have({{"a", "1"}});
  EXPECT_EQ(Update({{TypeKey("a"), "1"}, {TypeKey("b"), "2"}, {TypeKey("ch_feeder_custom"), "3"}}),
            UPDATE_RESULT_UPDATE);
  EXPECT_EQ(Made<B>::s_callback, nullptr);
  EXPECT_EQ(Made<CUSTOM>::s_callback, &ORVScheduler::RequestEvent);
  Cache().RemoveAppInfo("pkg");
  const Owned<Layer> owner(Made<CUSTOM>::s_layer);
}

TEST_F(UpdateTest, TheHeadGoesAndANewTypeComesAroundWhatIsLeft) {
  Have({{"a", "1"}, {"b", "2"}});
  EXPECT_EQ(Update({{TypeKey("a"), "1"}, {TypeKey("c"), "3"}, {DataKey("key"), "v"}}),
            UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Journal(), ElementsAre("b release"));
  EXPECT_EQ(Made<C>::s_layer->Inner(), Made<A>::s_layer);
  EXPECT_EQ(Find("pkg"), Made<A>::s_layer);
  EXPECT_EQ(Made<A>::s_layer->Staged().at("key"), "v");
  EXPECT_EQ(Made<C>::s_layer->Staged().at("key"), "");
  Cache().RemoveAppInfo("pkg");
  const Owned<Layer> owner(Made<C>::s_layer);
}

TEST_F(UpdateTest, AFailedUpdateIsForgottenAndTheNextOneReadsAgain) {
  Have({{"a", "1"}});
  Update({{TypeKey("a"), "first"}});
  fake::Fail("package_info_get_version");
  EXPECT_EQ(Update({{TypeKey("a"), "second"}}), UPDATE_RESULT_FAIL);
  Forget();
  EXPECT_EQ(Update({{TypeKey("a"), "third"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Differences(), ElementsAre("[Debug] [Intersection] first : a, second : third"));
}

TEST_F(UpdateTest, SeveralNewLayersStandAroundEachOtherInTheOrderOfTheirNames) {
  Have({{"b", "1"}});
  EXPECT_EQ(Update({{TypeKey("c"), "3"}, {TypeKey("b"), "1"}, {TypeKey("a"), "2"}}),
            UPDATE_RESULT_UPDATE);
  EXPECT_EQ(Made<C>::s_layer->Inner(), Made<A>::s_layer);
  EXPECT_EQ(Made<A>::s_layer->Inner(), Made<B>::s_layer);
  EXPECT_THAT(Made<A>::s_layer->StagedType(), Pair("a", "2"));
  EXPECT_THAT(Made<C>::s_layer->StagedType(), Pair("c", "3"));
  EXPECT_EQ(Find("pkg"), Made<B>::s_layer);
  Cache().RemoveAppInfo("pkg");
  const Owned<Layer> owner(Made<C>::s_layer);
}

TEST_F(UpdateTest, ANewTypeThatNobodyRegisteredIsADebugLineOnly) {
  Have({{"a", "1"}});
  EXPECT_EQ(Update({{TypeKey("a"), "1"}, {TypeKey("stranger"), "2"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Differences(), ElementsAre("[Debug] [Additional] first : stranger, second : 2",
                                         "[Debug] [Intersection] first : a, second : 1"));
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Info] Invalid AppType : stranger")));
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("a", "orv_app"));
}

TEST_F(UpdateTest, ASupportedTypeWithoutACreatorChangesNothing) {
  Creator().AddSupportedAppType("lonely");
  Have({{"a", "1"}});
  EXPECT_EQ(Update({{TypeKey("a"), "1"}, {TypeKey("lonely"), "2"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(fake::LogTexts(), HasLog("[Info] Invalid AppType : lonely"));
  EXPECT_THAT(TakeApart("pkg"), ElementsAre("a", "orv_app"));
}

// Data.

TEST_F(UpdateTest, NewDataIsStagedInKeyOrderAndOldDataStays) {
  Have({{"a", "1"}}, {{"key", "old"}, {"key of a", "kept"}});
  EXPECT_EQ(Update({{TypeKey("a"), "1"}, {DataKey("zzz"), "x"}, {DataKey("key"), "new"}}),
            UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Differences(), ElementsAre("[Debug] [Intersection] first : a, second : 1",
                                         "[Debug] [Intersection] first : key, second : new",
                                         "[Debug] [Intersection] first : zzz, second : x"));
  EXPECT_EQ(Made<A>::s_layer->Staged().at("key"), "new");
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_data", "key"), "old");
  EXPECT_EQ(Find("pkg")->GetMetadata("orv_data", "key of a"), "kept");
}

TEST_F(UpdateTest, DataIsStagedInTheNewHeadAfterTheOldOneWent) {
  Have({{"a", "1"}, {"b", "2"}});
  EXPECT_EQ(Update({{TypeKey("a"), "1"}, {DataKey("key"), "v"}}), UPDATE_RESULT_UPDATE);
  EXPECT_EQ(Made<A>::s_layer->Staged().at("key"), "v");
}

// Metadata read before.

TEST_F(UpdateTest, AfterAnInstallADroppedTypeAndAChangedValueStillStand) {
  fake::AddPackage(MakePackage("pkg", {{TypeKey("a"), "old"}, {TypeKey("b"), "2"}}));
  ASSERT_TRUE(Creator().CreateApp("pkg"));
  Forget();
  EXPECT_EQ(Update({{TypeKey("a"), "new"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Differences(), ElementsAre("[Debug] [Intersection] first : a, second : old",
                                         "[Debug] [Intersection] first : b, second : 2"));
}

TEST_F(UpdateTest, ASecondUpdateStillShowsWhatTheFirstSaw) {
  Have({{"a", "1"}});
  Update({{TypeKey("a"), "first"}});
  Forget();
  EXPECT_EQ(Update({{TypeKey("a"), "second"}}), UPDATE_RESULT_UPDATE);
  EXPECT_THAT(Differences(), ElementsAre("[Debug] [Intersection] first : a, second : first"));
}

}  // namespace
