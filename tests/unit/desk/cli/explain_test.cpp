// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// What `tv explain` says of metadata, and of what the daemon will do.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "cli/explain_effects.h"
#include "cli/explain_rules.h"
#include "cli/explain_text.h"

namespace desk {
namespace {

using Verdict = KeyRuling::Verdict;
using Outcome = Ruling::Outcome;
using Entries = std::vector<std::pair<std::string, std::string>>;

std::string Key(const std::string& rest) {
  return MetadataPrefix() + rest;
}

PackageFacts Package(const Entries& metadata) {
  PackageFacts package;
  package.id = "pkg";
  package.version = "1.0.0";
  package.apps = {{"pkg.ui", "ui", metadata}};
  return package;
}

KeyRuling RuleOn(const std::string& key, const std::string& value) {
  return RuleOnPackage(Package({{key, value}})).keys.at(0);
}

bool Mentions(const std::vector<std::string>& lines, const std::string& text) {
  return std::any_of(lines.begin(), lines.end(),
                     [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

Effects EffectsOf(const Entries& metadata) {
  const PackageFacts package = Package(metadata);
  return TellEffects(package, RuleOnPackage(package));
}

TEST(CliExplainRules, AKeyOfAnotherNamespaceIsIgnored) {
  const KeyRuling key = RuleOn("http://example.org/x", "1");
  EXPECT_EQ(key.verdict, Verdict::Ignored);
  EXPECT_EQ(key.reason, "does not begin with " + MetadataPrefix());
}

TEST(CliExplainRules, AKeyWithoutEitherWordIsIgnored) {
  EXPECT_EQ(RuleOn(Key("other/x"), "1").reason,
            "behind the prefix stands neither orv_type nor orv_data");
}

TEST(CliExplainRules, EachKnownTypeIsTaken) {
  for (const char* type :
       {"ch_feeder_standard", "ch_feeder_custom", "custom_ui_standard", "custom_ui_extended"}) {
    const KeyRuling key = RuleOn(Key(std::string("orv_type/") + type), "v");
    EXPECT_EQ(key.verdict, Verdict::Taken) << type;
    EXPECT_EQ(key.category, "orv_type");
    EXPECT_EQ(key.name, type);
  }
}

TEST(CliExplainRules, TheCharacterBehindTheWordIsNotLookedAt) {
  EXPECT_EQ(RuleOn(Key("orv_type#ch_feeder_custom"), "v").verdict, Verdict::Taken);
}

TEST(CliExplainRules, AnUnknownTypeIsIgnoredAndMakesNoRecord) {
  const Ruling ruling = RuleOnPackage(Package({{Key("orv_type/other"), "v"}}));
  EXPECT_EQ(ruling.keys[0].verdict, Verdict::Ignored);
  EXPECT_EQ(ruling.outcome, Outcome::NoKnownType);
  EXPECT_TRUE(ruling.layers.empty());
}

TEST(CliExplainRules, AWordThatStandsFurtherBehindCutsTheNameAtTheFixedPlace) {
  const KeyRuling key = RuleOn(Key("x/orv_type/abc"), "v");
  EXPECT_EQ(key.category, "orv_type");
  EXPECT_EQ(key.name, "e/abc");
  EXPECT_EQ(key.verdict, Verdict::Ignored);
}

TEST(CliExplainRules, TheTypeWordIsLookedForBeforeTheDataWord) {
  EXPECT_EQ(RuleOn(Key("orv_data/orv_type"), "v").category, "orv_type");
}

TEST(CliExplainRules, AKeyThatEndsBehindTheWordEndsTheReading) {
  const Ruling ruling = RuleOnPackage(
      Package({{Key("orv_type"), "v"}, {Key("orv_type/ch_feeder_custom"), "extended"}}));
  EXPECT_EQ(ruling.outcome, Outcome::Broken);
  EXPECT_EQ(ruling.keys[0].verdict, Verdict::EndsReading);
  EXPECT_EQ(ruling.keys[1].reason, "not read: a key before it has ended the reading");
  EXPECT_TRUE(ruling.layers.empty());
}

TEST(CliExplainRules, AKeyThatEndsBehindTheSeparatorHasAnEmptyName) {
  const KeyRuling key = RuleOn(Key("orv_type/"), "v");
  EXPECT_EQ(key.verdict, Verdict::Ignored);
  EXPECT_EQ(key.reason, "\"\" is no app type that the daemon knows");
}

TEST(CliExplainRules, TheFirstValueOfAKeyStays) {
  const Ruling ruling = RuleOnPackage(Package(
      {{Key("orv_type/ch_feeder_custom"), "first"}, {Key("orv_type/ch_feeder_custom"), "second"}}));
  EXPECT_EQ(ruling.keys[1].reason, "given before: the first value \"first\" stays");
  EXPECT_EQ(ruling.layers.at(0).value, "first");
}

TEST(CliExplainRules, TheMetadataOfAllAppsIsOneSet) {
  PackageFacts package = Package({{Key("orv_type/ch_feeder_custom"), "first"}});
  package.apps.push_back(
      {"pkg.service",
       "service",
       {{Key("orv_type/ch_feeder_custom"), "x"}, {Key("orv_type/custom_ui_standard"), "info"}}});
  const Ruling ruling = RuleOnPackage(package);
  ASSERT_EQ(ruling.layers.size(), 2U);
  EXPECT_EQ(ruling.layers[0].value, "first");
  EXPECT_EQ(ruling.serviceApp, "pkg.service");
  EXPECT_EQ(ruling.uiApp, "pkg.ui");
}

TEST(CliExplainRules, OfSeveralAppsOfAKindTheLastCounts) {
  PackageFacts package = Package({});
  package.apps.push_back({"pkg.second", "ui", {}});
  EXPECT_EQ(RuleOnPackage(package).uiApp, "pkg.second");
}

TEST(CliExplainRules, LayersStandInTheOrderOfTheirNames) {
  const Ruling ruling = RuleOnPackage(Package({{Key("orv_type/custom_ui_standard"), ""},
                                               {Key("orv_type/ch_feeder_standard"), ""},
                                               {Key("orv_type/custom_ui_extended"), ""},
                                               {Key("orv_type/ch_feeder_custom"), ""}}));
  std::vector<std::string> types;
  for (const auto& layer : ruling.layers) types.push_back(layer.type);
  EXPECT_EQ(types, (std::vector<std::string>{"ch_feeder_custom", "ch_feeder_standard",
                                             "custom_ui_extended", "custom_ui_standard"}));
}

TEST(CliExplainRules, ADataKeyIsTakenByEachLayerThatKnowsIt) {
  const Ruling ruling = RuleOnPackage(Package({{Key("orv_data/custom_ui_cold_boot_opt"), "x"},
                                               {Key("orv_type/custom_ui_standard"), ""},
                                               {Key("orv_type/custom_ui_extended"), ""}}));
  EXPECT_EQ(ruling.keys[0].verdict, Verdict::Taken);
  EXPECT_EQ(ruling.keys[0].reason, "data of custom_ui_extended and custom_ui_standard");
  EXPECT_EQ(ruling.layers[0].Data("custom_ui_cold_boot_opt"), "x");
  EXPECT_EQ(ruling.layers[1].Data("custom_ui_cold_boot_opt"), "x");
}

TEST(CliExplainRules, ADataKeyOfALayerThatThePackageLacksIsIgnored) {
  const Ruling ruling = RuleOnPackage(Package(
      {{Key("orv_data/channel_data_url"), "http://x"}, {Key("orv_type/ch_feeder_custom"), ""}}));
  EXPECT_EQ(ruling.keys[0].verdict, Verdict::Ignored);
  EXPECT_EQ(ruling.keys[0].reason,
            "the package has no layer that takes it: it belongs to ch_feeder_standard");
}

TEST(CliExplainRules, AnUnknownDataKeyIsIgnored) {
  EXPECT_EQ(RuleOn(Key("orv_data/colour"), "red").reason,
            "\"colour\" is no data key that a layer takes");
}

TEST(CliExplainRules, APackageWithoutTheNamespaceIsAnOrdinaryOne) {
  EXPECT_EQ(RuleOnPackage(Package({{"http://x", "1"}})).outcome, Outcome::NoMetadata);
  EXPECT_EQ(RuleOnPackage(Package({})).outcome, Outcome::NoMetadata);
}

TEST(CliExplainRules, ALayerHasAllItsDataKeys) {
  const auto layers = BuildLayers({{"ch_feeder_standard", ""}}, {{"channel_data_url", "u"}});
  EXPECT_EQ(layers.at(0).data,
            (std::map<std::string, std::string>{
                {"ch.app.boosting", ""}, {"channel_data_url", "u"}, {"schedule_data_url", ""}}));
}

TEST(CliExplainEffects, AnOrdinaryPackageHasNone) {
  const Effects effects = EffectsOf({{"http://x", "1"}});
  EXPECT_TRUE(effects.install.empty());
  EXPECT_TRUE(effects.removal.empty());
}

TEST(CliExplainEffects, TheMaskOfAStandardFeederFollowsValueAndUrls) {
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

TEST(CliExplainEffects, AShortUrlBesideAFileUrlIsWarnedOf) {
  const Effects effects = EffectsOf({{Key("orv_type/ch_feeder_standard"), ""},
                                     {Key("orv_data/channel_data_url"), "file://a.json"}});
  EXPECT_TRUE(Mentions(effects.warnings, "schedule_data_url \"\" is shorter than 6 characters"));
}

TEST(CliExplainEffects, AUrlOfSixCharactersIsLongEnough) {
  const auto warnings = [](const std::string& schedule) {
    return EffectsOf({{Key("orv_type/ch_feeder_standard"), ""},
                      {Key("orv_data/channel_data_url"), "file://a.json"},
                      {Key("orv_data/schedule_data_url"), schedule}})
        .warnings;
  };
  EXPECT_TRUE(Mentions(warnings("file:"), "is shorter than 6 characters"));
  EXPECT_FALSE(Mentions(warnings("file:/"), "is shorter than 6 characters"));
}

TEST(CliExplainEffects, AWebUrlBesideAFileUrlIsWarnedOf) {
  const Effects effects = EffectsOf({{Key("orv_type/ch_feeder_standard"), ""},
                                     {Key("orv_data/channel_data_url"), "file://a.json"},
                                     {Key("orv_data/schedule_data_url"), "http://b"}});
  EXPECT_TRUE(Mentions(effects.warnings,
                       "schedule_data_url \"http://b\" gets the directory put into it too"));
}

TEST(CliExplainEffects, AnUnknownSchemeIsWarnedOf) {
  const Effects effects = EffectsOf(
      {{Key("orv_type/ch_feeder_standard"), ""}, {Key("orv_data/channel_data_url"), "HTTP://b"}});
  EXPECT_TRUE(Mentions(effects.warnings, "has no scheme that the daemon knows"));
}

TEST(CliExplainEffects, OnlyTheWordTrueBoosts) {
  const Entries base = {{Key("orv_type/ch_feeder_standard"), ""}};
  Entries yes = base;
  yes.emplace_back(Key("orv_data/ch.app.boosting"), "true");
  Entries no = base;
  no.emplace_back(Key("orv_data/ch.app.boosting"), "True");
  EXPECT_TRUE(Mentions(EffectsOf(yes).install, "makes the boost flag file"));
  EXPECT_TRUE(Mentions(EffectsOf(no).warnings, "only \"true\" boosts"));
  EXPECT_FALSE(Mentions(EffectsOf(no).install, "boost"));
}

TEST(CliExplainEffects, ASingleQuoteThatReachesTheStoreIsWarnedOf) {
  EXPECT_TRUE(Mentions(EffectsOf({{Key("orv_type/ch_feeder_custom"), "it's"}}).warnings,
                       "\"it's\" holds a single quote"));
}

TEST(CliExplainEffects, ASingleQuoteInAKeyThatNobodyTakesDoesNoHarm) {
  EXPECT_FALSE(Mentions(
      EffectsOf({{Key("orv_type/ch_feeder_custom"), "x"}, {Key("orv_data/colour"), "it's"}})
          .warnings,
      "single quote"));
}

TEST(CliExplainEffects, ACustomFeederWithoutAServiceIsWarnedOf) {
  EXPECT_TRUE(Mentions(EffectsOf({{Key("orv_type/ch_feeder_custom"), "x"}}).warnings,
                       "no service application to launch"));
}

TEST(CliExplainEffects, AnEmptyCustomFeederValueIsWarnedOf) {
  EXPECT_TRUE(Mentions(EffectsOf({{Key("orv_type/ch_feeder_custom"), ""}}).warnings,
                       "later passes of the scheduler leave the package out"));
}

TEST(CliExplainEffects, AMissingImageIsWarnedOf) {
  PackageFacts package = Package({{Key("orv_type/ch_feeder_standard"), "extended"}});
  const Ruling ruling = RuleOnPackage(package);
  EXPECT_TRUE(Mentions(TellEffects(package, ruling).warnings, "no image pkg.ui.tmg"));
  package.images = {"pkg.ui.tmg"};
  EXPECT_FALSE(Mentions(TellEffects(package, ruling).warnings, "no image"));
}

TEST(CliExplainEffects, AnUnknownScreenIsWarnedOfAndTheOthersAreTold) {
  const Effects effects = EffectsOf({{Key("orv_type/custom_ui_extended"), "epg, channel_list"}});
  EXPECT_TRUE(Mentions(effects.install, "pkg.ui becomes the app that answers epg"));
  EXPECT_TRUE(Mentions(effects.warnings, "\" channel_list\" is none of"));
}

TEST(CliExplainEffects, WithABackgroundImageTheReplacementUiComesFirst) {
  const Effects effects = EffectsOf({{Key("orv_type/custom_ui_extended"), "epg"},
                                     {Key("orv_data/custom_ui_cold_boot_opt"), "background_img"}});
  EXPECT_TRUE(Mentions(effects.install, "the replacement UI of"));
  EXPECT_TRUE(Mentions(effects.removal, "takes epg over once more"));
}

TEST(CliExplainEffects, LayersCleanUpFromTheOutsideIn) {
  const Effects effects = EffectsOf({{Key("orv_type/ch_feeder_custom"), "extended"},
                                     {Key("orv_type/ch_feeder_standard"), "extended"}});
  std::vector<std::string> cleaned;
  for (const auto& line : effects.removal) {
    if (line.find("is removed when") != std::string::npos) {
      cleaned.push_back(line.substr(0, line.find(':')));
    }
  }
  EXPECT_EQ(cleaned, (std::vector<std::string>{"ch_feeder_standard", "ch_feeder_custom"}));
}

TEST(CliExplainChanges, TypesAreToldAsGoingComingAndStaying) {
  const Ruling ruling = RuleOnPackage(Package(
      {{Key("orv_type/ch_feeder_custom"), "b"}, {Key("orv_type/custom_ui_standard"), "info"}}));
  EXPECT_EQ(TellTypeChanges(ruling, {{"ch_feeder_custom", "a"}, {"ch_feeder_standard", "x"}}),
            (std::vector<std::string>{
                "ch_feeder_custom: stays, \"a\" becomes \"b\"", "ch_feeder_standard: is taken out",
                "custom_ui_standard: is built, but has no effect until the package is installed "
                "anew"}));
}

TEST(CliExplainChanges, WithoutATypeTheRecordGoes) {
  EXPECT_EQ(TellTypeChanges(RuleOnPackage(Package({})), {{"ch_feeder_custom", "a"}}),
            std::vector<std::string>{"no type is left: the app is stopped and its record removed"});
}

TEST(CliExplainText, ThePageNamesKeysLayersAndSteps) {
  const PackageFacts package =
      Package({{Key("orv_type/ch_feeder_standard"), ""}, {"http://x", "1"}});
  Explanation explanation;
  explanation.ruling = RuleOnPackage(package);
  explanation.effects = TellEffects(package, explanation.ruling);
  std::ostringstream out;
  PrintExplanation(out, package, explanation);
  const std::string page = out.str();
  EXPECT_EQ(page.find("Package pkg 1.0.0\n\n  UI application       pkg.ui\n"
                      "  service application  -\n  channel-bound app    yes\n"),
            0U);
  EXPECT_NE(page.find("    + " + Key("orv_type/ch_feeder_standard") +
                      " = \"\"\n      taken: app type ch_feeder_standard\n"),
            std::string::npos);
  EXPECT_NE(page.find("    - http://x = \"1\"\n      ignored: does not begin with"),
            std::string::npos);
  EXPECT_NE(page.find("  1. ch_feeder_standard = \"\"\n       ch.app.boosting = \"\"\n"),
            std::string::npos);
  EXPECT_NE(page.find("\nOn removal:\n"), std::string::npos);
}

TEST(CliExplainText, TheJsonHasTheVerdictOfEachKey) {
  const PackageFacts package =
      Package({{Key("orv_type/custom_ui_standard"), "info"}, {Key("orv_type"), ""}});
  Explanation explanation;
  explanation.ruling = RuleOnPackage(package);
  const Json::Value json = ToJson(package, explanation);
  EXPECT_FALSE(json["channel_bound"].asBool());
  EXPECT_EQ(json["keys"][0]["verdict"], "taken");
  EXPECT_EQ(json["keys"][1]["verdict"], "error");
}

}  // namespace
}  // namespace desk
