// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/checks/metadata_rules.h"

#include <gtest/gtest.h>

#include "facts.h"

namespace desk {
namespace {

using Verdict = KeyRuling::Verdict;
using Outcome = Ruling::Outcome;

KeyRuling RuleOn(const std::string& key, const std::string& value) {
  return RuleOnPackage(Package({{key, value}})).keys.at(0);
}

TEST(MetadataRules, AKeyWithAnotherPrefixIsIgnored) {
  const KeyRuling key = RuleOn("http://example.org/x", "1");
  EXPECT_EQ(key.verdict, Verdict::Ignored);
  EXPECT_EQ(key.reason, "does not begin with " + MetadataPrefix());
}

TEST(MetadataRules, AKeyWithoutEitherWordIsIgnored) {
  EXPECT_EQ(RuleOn(Key("other/x"), "1").reason, "neither orv_type nor orv_data follows the prefix");
}

TEST(MetadataRules, EachKnownTypeIsTaken) {
  for (const char* type :
       {"ch_feeder_standard", "ch_feeder_custom", "custom_ui_standard", "custom_ui_extended"}) {
    const KeyRuling key = RuleOn(Key(std::string("orv_type/") + type), "v");
    EXPECT_EQ(key.verdict, Verdict::Taken) << type;
    EXPECT_EQ(key.category, "orv_type");
    EXPECT_EQ(key.name, type);
  }
}

TEST(MetadataRules, TheSeparatorIsNotChecked) {
  EXPECT_EQ(RuleOn(Key("orv_type#ch_feeder_custom"), "v").verdict, Verdict::Taken);
}

TEST(MetadataRules, AnUnknownTypeCreatesNoRecord) {
  const Ruling ruling = RuleOnPackage(Package({{Key("orv_type/other"), "v"}}));
  EXPECT_EQ(ruling.keys[0].verdict, Verdict::Ignored);
  EXPECT_EQ(ruling.outcome, Outcome::NoKnownType);
  EXPECT_TRUE(ruling.layers.empty());
}

TEST(MetadataRules, ALaterWordCutsTheNameAtTheFixedPosition) {
  const KeyRuling key = RuleOn(Key("x/orv_type/abc"), "v");
  EXPECT_EQ(key.category, "orv_type");
  EXPECT_EQ(key.name, "e/abc");
  EXPECT_EQ(key.verdict, Verdict::Ignored);
}

TEST(MetadataRules, TheTypeWordIsSearchedForFirst) {
  EXPECT_EQ(RuleOn(Key("orv_data/orv_type"), "v").category, "orv_type");
}

TEST(MetadataRules, AKeyWithoutANameIsAnErrorAndTheNextIsRead) {
  const Ruling ruling = RuleOnPackage(
      Package({{Key("orv_type"), "v"}, {Key("orv_type/ch_feeder_custom"), "extended"}}));
  EXPECT_EQ(ruling.outcome, Outcome::ChannelBound);
  EXPECT_EQ(ruling.keys[0].verdict, Verdict::Error);
  EXPECT_EQ(ruling.keys[1].verdict, Verdict::Taken);
  EXPECT_EQ(ruling.layers.size(), 1U);
}

TEST(MetadataRules, AKeyWithoutANameAloneIsNoMetadata) {
  EXPECT_EQ(RuleOnPackage(Package({{Key("orv_data"), "v"}})).outcome, Outcome::NoMetadata);
}

TEST(MetadataRules, AKeyThatEndsAfterTheSeparatorHasAnEmptyName) {
  const KeyRuling key = RuleOn(Key("orv_type/"), "v");
  EXPECT_EQ(key.verdict, Verdict::Ignored);
  EXPECT_EQ(key.reason, "\"\" is not an app type that the daemon knows");
}

TEST(MetadataRules, TheFirstValueOfAKeyIsKept) {
  const Ruling ruling = RuleOnPackage(Package(
      {{Key("orv_type/ch_feeder_custom"), "first"}, {Key("orv_type/ch_feeder_custom"), "second"}}));
  EXPECT_EQ(ruling.keys[1].reason, "given before: the first value \"first\" is kept");
  EXPECT_EQ(ruling.layers.at(0).value, "first");
}

TEST(MetadataRules, TheMetadataOfAllAppsIsOneSet) {
  PackageFacts package = Package({{Key("orv_type/ch_feeder_custom"), "first"}});
  package.apps.push_back(
      {"pkg.service",
       "service",
       {{Key("orv_type/ch_feeder_custom"), "x"}, {Key("orv_type/custom_ui_standard"), "info"}},
       ""});
  const Ruling ruling = RuleOnPackage(package);
  ASSERT_EQ(ruling.layers.size(), 2U);
  EXPECT_EQ(ruling.layers[0].value, "first");
  EXPECT_EQ(ruling.serviceApp, "pkg.service");
  EXPECT_EQ(ruling.uiApp, "pkg.ui");
}

TEST(MetadataRules, TheLastAppOfAKindCounts) {
  PackageFacts package = Package({});
  package.apps.push_back({"pkg.second", "ui", {}, ""});
  EXPECT_EQ(RuleOnPackage(package).uiApp, "pkg.second");
}

TEST(MetadataRules, LayersAreInTheOrderOfTheirNames) {
  const Ruling ruling = RuleOnPackage(Package({{Key("orv_type/custom_ui_standard"), ""},
                                               {Key("orv_type/ch_feeder_standard"), ""},
                                               {Key("orv_type/custom_ui_extended"), ""},
                                               {Key("orv_type/ch_feeder_custom"), ""}}));
  std::vector<std::string> types;
  for (const auto& layer : ruling.layers) {
    types.push_back(layer.type);
  }
  EXPECT_EQ(types, (std::vector<std::string>{"ch_feeder_custom", "ch_feeder_standard",
                                             "custom_ui_extended", "custom_ui_standard"}));
}

TEST(MetadataRules, ADataKeyIsUsedByEachLayerThatKnowsIt) {
  const Ruling ruling = RuleOnPackage(Package({{Key("orv_data/custom_ui_cold_boot_opt"), "x"},
                                               {Key("orv_type/custom_ui_standard"), ""},
                                               {Key("orv_type/custom_ui_extended"), ""}}));
  EXPECT_EQ(ruling.keys[0].verdict, Verdict::Taken);
  EXPECT_EQ(ruling.keys[0].reason, "data of custom_ui_extended and custom_ui_standard");
  EXPECT_EQ(ruling.layers[0].Data("custom_ui_cold_boot_opt"), "x");
  EXPECT_EQ(ruling.layers[1].Data("custom_ui_cold_boot_opt"), "x");
}

TEST(MetadataRules, ADataKeyOfAMissingLayerIsIgnored) {
  const Ruling ruling = RuleOnPackage(Package(
      {{Key("orv_data/channel_data_url"), "http://x"}, {Key("orv_type/ch_feeder_custom"), ""}}));
  EXPECT_EQ(ruling.keys[0].verdict, Verdict::Ignored);
  EXPECT_EQ(ruling.keys[0].reason,
            "the package has no layer that uses it: it belongs to ch_feeder_standard");
}

TEST(MetadataRules, AnUnknownDataKeyIsIgnored) {
  EXPECT_EQ(RuleOn(Key("orv_data/colour"), "red").reason,
            "\"colour\" is not a data key that a layer uses");
}

TEST(MetadataRules, APackageWithoutThePrefixIsAnOrdinaryOne) {
  EXPECT_EQ(RuleOnPackage(Package({{"http://x", "1"}})).outcome, Outcome::NoMetadata);
  EXPECT_EQ(RuleOnPackage(Package({})).outcome, Outcome::NoMetadata);
}

TEST(MetadataRules, ALayerHasAllItsDataKeys) {
  const auto layers = BuildLayers({{"ch_feeder_standard", ""}}, {{"channel_data_url", "u"}});
  EXPECT_EQ(layers.at(0).data,
            (std::map<std::string, std::string>{
                {"ch.app.boosting", ""}, {"channel_data_url", "u"}, {"schedule_data_url", ""}}));
}

TEST(MetadataRules, APackagedFeederIsToldByValueAndUrls) {
  const auto mask = [](const std::string& value, const std::string& channel,
                       const std::string& schedule) {
    return PackagedDataOf({"ch_feeder_standard",
                           value,
                           {{"channel_data_url", channel}, {"schedule_data_url", schedule}}});
  };
  EXPECT_EQ(mask("", "", ""), 0);
  EXPECT_EQ(mask("extended", "", ""), 1);
  EXPECT_EQ(mask("", "file://a", ""), 2);
  EXPECT_EQ(mask("extended", "http://a", "file://b"), 3);
  EXPECT_EQ(mask("Extended", "FILE://a", "nocolon"), 0);
}

}  // namespace
}  // namespace desk
