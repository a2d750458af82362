// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/AppTypeDecorator.h"

#include <gmock/gmock.h>

#include "fake/control/log.h"
#include "unit/app_info/records.h"

namespace {

using records::Info;
using records::Journal;
using records::Layer;
using records::Owned;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// record <- a <- b <- c; the chain owns itself through c.
struct Chain {
  ORVAppInfo* record = new ORVAppInfo(Info("pkg"));
  Layer* a = new Layer(record, "a", "value a", {"shared", "only_a"}, {"staged_a"});
  Layer* b = new Layer(a, "b", "value b", {"shared"}, {"staged_a", "staged_b"});
  Layer* c = new Layer(b, "c", "value c");
  Owned<AppInfo> owner{c};
};

TEST(AppTypeDecorator, ALayerTakesItsOwnCopyOfTheIdentity) {
  Chain chain;
  EXPECT_EQ(chain.c->m_sPackageID, "pkg");
  EXPECT_EQ(chain.c->m_sAppID, "pkg.app");
  EXPECT_EQ(chain.c->m_sWidgetID, "pkg-widget");
  EXPECT_EQ(chain.c->m_sServiceID, "pkg.service");
  EXPECT_EQ(chain.c->m_sVersion, "1.2.3");
  chain.c->m_sWidgetID = "changed";
  EXPECT_EQ(chain.b->m_sWidgetID, "pkg-widget");
  EXPECT_EQ(chain.record->m_sWidgetID, "pkg-widget");
}

TEST(AppTypeDecorator, ANewLayerHasItsTypeAppliedAndNothingStaged) {
  const auto layer = records::MakeLayer("pkg", "a", "value");
  EXPECT_THAT(layer->AppliedType(), Pair("a", "value"));
  EXPECT_THAT(layer->StagedType(), Pair("a", ""));
  EXPECT_THAT(layer->Applied(), IsEmpty());
  EXPECT_THAT(layer->Staged(), IsEmpty());
}

TEST(AppTypeDecorator, TheTypeOfAChainIsItsOutermostLayers) {
  Chain chain;
  EXPECT_EQ(chain.owner->GetAppType(), "c");
  EXPECT_EQ(chain.a->GetAppType(), "a");
}

TEST(AppTypeDecorator, OperationsActFromTheInsideOut) {
  Chain chain;
  chain.c->RunOperation(true);
  chain.c->RunOperation(false);
  chain.c->UpdateOperation();
  chain.c->StopOperation();
  EXPECT_THAT(Journal(), ElementsAre("a run true", "b run true", "c run true",     //
                                     "a run false", "b run false", "c run false",  //
                                     "a update", "b update", "c update",           //
                                     "a stop", "b stop", "c stop"));
}

TEST(AppTypeDecorator, AStagedTypeValueGoesToTheLayerOfThatNameOnly) {
  Chain chain;
  chain.c->SetMetadata("orv_type", {"b", "new"}, true);
  EXPECT_THAT(chain.a->StagedType(), Pair("a", ""));
  EXPECT_THAT(chain.b->StagedType(), Pair("b", "new"));
  EXPECT_THAT(chain.c->StagedType(), Pair("c", ""));
  EXPECT_THAT(chain.b->AppliedType(), Pair("b", "value b"));
}

TEST(AppTypeDecorator, StagedDataGoesToEveryLayerThatEnteredTheKey) {
  Chain chain;
  chain.c->SetMetadata("orv_data", {"staged_a", "new"}, true);
  EXPECT_THAT(chain.a->Staged(), ElementsAre(Pair("staged_a", "new")));
  EXPECT_THAT(chain.b->Staged(), ElementsAre(Pair("staged_a", "new"), Pair("staged_b", "")));
  EXPECT_THAT(chain.c->Staged(), IsEmpty());
}

TEST(AppTypeDecorator, StagedDataIsNotVisible) {
  Chain chain;
  chain.c->SetMetadata("orv_data", {"staged_a", "new"}, true);
  EXPECT_EQ(chain.c->GetMetadata("orv_data", "staged_a"), "");
  MetadataMap metadata;
  chain.c->GetAllMetadata(metadata);
  EXPECT_EQ(metadata["orv_data"].count("staged_a"), 0u);
}

TEST(AppTypeDecorator, AnAppliedTypeValueCannotBeSet) {
  Chain chain;
  chain.c->SetMetadata("orv_type", {"b", "new"}, false);
  EXPECT_EQ(chain.c->GetMetadata("orv_type", "b"), "value b");
  EXPECT_THAT(chain.b->StagedType(), Pair("b", ""));
}

TEST(AppTypeDecorator, AppliedDataGoesToEveryLayerThatEnteredTheKey) {
  Chain chain;
  chain.c->SetMetadata("orv_data", {"shared", "x"}, false);
  EXPECT_EQ(chain.a->Applied().at("shared"), "x");
  EXPECT_EQ(chain.b->Applied().at("shared"), "x");
}

TEST(AppTypeDecorator, AKeyOfAnInnerLayerAloneIsStoredThereAndNowhereElse) {
  Chain chain;
  chain.c->SetMetadata("orv_data", {"only_a", "x"}, false);
  EXPECT_EQ(chain.a->Applied().at("only_a"), "x");
  EXPECT_EQ(chain.b->Applied().count("only_a"), 0u);
  EXPECT_THAT(chain.c->Applied(), IsEmpty());
}

TEST(AppTypeDecorator, AKeyThatNoLayerEnteredIsDropped) {
  Chain chain;
  chain.c->SetMetadata("orv_data", {"stranger", "x"}, false);
  chain.c->SetMetadata("orv_data", {"stranger", "x"}, true);
  EXPECT_EQ(chain.c->GetMetadata("orv_data", "stranger"), "");
  EXPECT_EQ(chain.a->Applied().size(), 2u);
  EXPECT_EQ(chain.a->Staged().size(), 1u);
}

TEST(AppTypeDecorator, AnInventedCategoryStillWritesAppliedData) {
  Chain chain;
  chain.c->SetMetadata("invented", {"only_a", "x"}, false);
  EXPECT_EQ(chain.a->Applied().at("only_a"), "x");
}

TEST(AppTypeDecorator, AnInventedCategoryStagesNothing) {
  Chain chain;
  chain.c->SetMetadata("invented", {"staged_a", "x"}, true);
  chain.c->SetMetadata("invented", {"a", "x"}, true);
  EXPECT_THAT(chain.a->Staged(), ElementsAre(Pair("staged_a", "")));
  EXPECT_THAT(chain.a->StagedType(), Pair("a", ""));
}

TEST(AppTypeDecorator, TheTypeValueOfAnyLayerCanBeRead) {
  Chain chain;
  EXPECT_EQ(chain.c->GetMetadata("orv_type", "a"), "value a");
  EXPECT_EQ(chain.c->GetMetadata("orv_type", "b"), "value b");
  EXPECT_EQ(chain.c->GetMetadata("orv_type", "c"), "value c");
}

TEST(AppTypeDecorator, AnUnknownTypeReadsEmpty) {
  Chain chain;
  EXPECT_EQ(chain.c->GetMetadata("orv_type", "ch_feeder_custom"), "");
  EXPECT_EQ(chain.a->GetMetadata("orv_type", "c"), "");
}

TEST(AppTypeDecorator, AnInventedCategoryReadsTheAppliedData) {
  Chain chain;
  chain.c->SetMetadata("orv_data", {"only_a", "x"}, false);
  EXPECT_EQ(chain.c->GetMetadata("invented", "only_a"), "x");
}

TEST(AppTypeDecorator, OfTwoEqualKeysTheOuterIsReadAndTheInnerIsCollected) {
  Chain chain;
  chain.c->SetMetadata("orv_data", {"shared", "inner"}, false);
  auto* outer = new Layer(chain.owner.release(), "d", "value d", {"shared"});
  const Owned<AppInfo> owner(outer);
  // Reaches every layer below, but not the new one.
  outer->SetMetadata("orv_data", {"shared", "both"}, false);
  outer->Inner()->SetMetadata("orv_data", {"shared", "inner"}, false);

  EXPECT_EQ(owner->GetMetadata("orv_data", "shared"), "both");
  MetadataMap metadata;
  owner->GetAllMetadata(metadata);
  EXPECT_EQ(metadata["orv_data"]["shared"], "inner");
}

TEST(AppTypeDecorator, AllMetadataHoldsEveryTypeAndEveryAppliedKey) {
  Chain chain;
  chain.c->SetMetadata("orv_data", {"only_a", "x"}, false);
  MetadataMap metadata;
  chain.c->GetAllMetadata(metadata);
  EXPECT_THAT(metadata["orv_type"],
              ElementsAre(Pair("a", "value a"), Pair("b", "value b"), Pair("c", "value c")));
  EXPECT_THAT(metadata["orv_data"], ElementsAre(Pair("only_a", "x"), Pair("shared", "")));
  EXPECT_EQ(metadata.size(), 2u);
}

TEST(AppTypeDecorator, AllMetadataHasBothCategoriesEvenWithoutData) {
  const auto layer = records::MakeLayer("pkg", "a", "");
  MetadataMap metadata;
  layer->GetAllMetadata(metadata);
  EXPECT_THAT(metadata["orv_type"], ElementsAre(Pair("a", "")));
  ASSERT_EQ(metadata.count("orv_data"), 1u);
  EXPECT_THAT(metadata["orv_data"], IsEmpty());
}

TEST(AppTypeDecorator, AllMetadataKeepsWhatIsThereAlready) {
  Chain chain;
  MetadataMap metadata = {{"orv_type", {{"a", "kept"}}}, {"orv_data", {{"shared", "kept"}}}};
  chain.c->GetAllMetadata(metadata);
  EXPECT_EQ(metadata["orv_type"]["a"], "kept");
  EXPECT_EQ(metadata["orv_data"]["shared"], "kept");
  EXPECT_EQ(metadata["orv_type"]["b"], "value b");
}

TEST(AppTypeDecorator, RemovalErasesTheSecondKeyWhereTheFirstStands) {
  Chain chain;
  chain.c->RemoveMetadata("only_a", "shared");
  EXPECT_THAT(chain.a->Applied(), ElementsAre(Pair("only_a", "")));
  // This layer does not have the first key.
  EXPECT_THAT(chain.b->Applied(), ElementsAre(Pair("shared", "")));
}

TEST(AppTypeDecorator, RemovalOfAnUnknownSecondKeyChangesNothing) {
  Chain chain;
  chain.c->RemoveMetadata("only_a", "stranger");
  chain.c->RemoveMetadata("orv_data", "shared");
  EXPECT_EQ(chain.a->Applied().size(), 2u);
  EXPECT_EQ(chain.b->Applied().size(), 1u);
}

TEST(AppTypeDecorator, ExtractionWithoutAPlaceForTheRestLeavesTheChainAlone) {
  Chain chain;
  fake::ClearLog();
  EXPECT_EQ(chain.c->ExtractTargetAppType("c", nullptr), nullptr);
  EXPECT_EQ(chain.c->Inner(), chain.b);
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST(AppTypeDecorator, ExtractionOfTheMiddleLayerClosesTheChain) {
  Chain chain;
  AppInfo* next = nullptr;
  const Owned<AppInfo> extracted(chain.c->ExtractTargetAppType("b", &next));
  EXPECT_EQ(extracted.get(), chain.b);
  EXPECT_EQ(next, nullptr);
  EXPECT_EQ(chain.c->Inner(), chain.a);
  EXPECT_EQ(chain.b->Inner(), nullptr);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rTargetType : b, first : c",
                                            "[Info] rTargetType : b, first : b"));
}

TEST(AppTypeDecorator, ExtractionOfTheTopHandsOverTheNewTop) {
  Chain chain;
  AppInfo* next = nullptr;
  EXPECT_EQ(chain.c->ExtractTargetAppType("c", &next), chain.c);
  const Owned<AppInfo> extracted(chain.owner.release());
  chain.owner.reset(next);
  EXPECT_EQ(next, chain.b);
  EXPECT_EQ(chain.c->Inner(), nullptr);
}

TEST(AppTypeDecorator, ExtractionOfTheInnermostLayerLeavesTheRecord) {
  Chain chain;
  AppInfo* next = nullptr;
  const Owned<AppInfo> extracted(chain.c->ExtractTargetAppType("a", &next));
  EXPECT_EQ(extracted.get(), chain.a);
  EXPECT_EQ(chain.b->Inner(), chain.record);
}

TEST(AppTypeDecorator, ExtractionOfATypeThatIsNotThereGivesNull) {
  Chain chain;
  AppInfo* next = nullptr;
  EXPECT_EQ(chain.c->ExtractTargetAppType("stranger", &next), nullptr);
  EXPECT_EQ(next, nullptr);
  EXPECT_EQ(chain.c->Inner(), chain.b);
  EXPECT_EQ(chain.b->Inner(), chain.a);
  EXPECT_EQ(chain.a->Inner(), chain.record);
}

TEST(AppTypeDecorator, OfTwoLayersOfOneTypeTheOuterIsExtracted) {
  auto* inner = new Layer(new ORVAppInfo(Info("pkg")), "a", "inner");
  auto* outer = new Layer(inner, "a", "outer");
  AppInfo* next = nullptr;
  const Owned<AppInfo> extracted(outer->ExtractTargetAppType("a", &next));
  const Owned<AppInfo> rest(next);
  EXPECT_EQ(extracted.get(), outer);
  EXPECT_EQ(rest.get(), inner);
}

TEST(AppTypeDecorator, AnExtractedLayersReleaseStopsAtItself) {
  Chain chain;
  AppInfo* next = nullptr;
  Layer::Release(chain.c->ExtractTargetAppType("b", &next));
  EXPECT_THAT(Journal(), ElementsAre("b release"));
  EXPECT_EQ(chain.c->GetMetadata("orv_type", "a"), "value a");
  EXPECT_EQ(chain.record->m_sPackageID, "pkg");
}

TEST(AppTypeDecorator, AChainIsReleasedFromTheOutsideIn) {
  Chain chain;
  chain.owner.reset();
  EXPECT_THAT(Journal(), ElementsAre("c release", "b release", "a release"));
}

/// A layer without a release function of its own.
class Unreleased final : public AppTypeDecorator {
 public:
  explicit Unreleased(AppInfo* inner) : AppTypeDecorator(inner, "unreleased", "") {}
  ~Unreleased() = default;
  ReleaseFunction GetReleaseFunction() const override { return nullptr; }
};

TEST(AppTypeDecorator, ALayerWithoutAReleaseFunctionIsLeftByTheOneAroundIt) {
  Unreleased inner(new ORVAppInfo(Info("pkg")));
  Layer::Release(new Layer(&inner, "a", ""));
  EXPECT_THAT(Journal(), ElementsAre("a release"));
  EXPECT_EQ(inner.GetMetadata("orv_type", "unreleased"), "");
  EXPECT_EQ(inner.m_sPackageID, "pkg");
}

}  // namespace
