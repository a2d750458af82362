// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// What `tv explain` says about a package and what the daemon will do.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "desk/cli/explain_effects.h"
#include "desk/cli/explain_text.h"
#include "unit/desk/checks/facts.h"

namespace desk::cli {
namespace {

std::vector<Effect> EffectsOf(const Entries& metadata) {
  const PackageFacts package = Package(metadata);
  return TellEffects(package, RuleOnPackage(package));
}

std::vector<std::string> InstallOf(const Entries& metadata) {
  return LinesOf(EffectsOf(metadata), Occasion::Install);
}

std::vector<std::string> RemovalOf(const Entries& metadata) {
  return LinesOf(EffectsOf(metadata), Occasion::Removal);
}

TEST(CliExplainEffects, AnOrdinaryPackageHasNone) {
  EXPECT_TRUE(EffectsOf({{"http://x", "1"}}).empty());
}

TEST(CliExplainEffects, OnlyTheValueTrueBoosts) {
  const auto with = [](const std::string& value) {
    return InstallOf(
        {{Key("orv_type/ch_feeder_standard"), ""}, {Key("orv_data/ch.app.boosting"), value}});
  };
  EXPECT_TRUE(Mentions(with("true"), "creates the boost flag file"));
  EXPECT_FALSE(Mentions(with("True"), "boost"));
}

TEST(CliExplainEffects, OnlyKnownScreensAreAnswered) {
  EXPECT_TRUE(Mentions(InstallOf({{Key("orv_type/custom_ui_extended"), "epg, channel_list"}}),
                       "custom_ui_extended: pkg.ui becomes the app that answers epg"));
}

TEST(CliExplainEffects, WithABackgroundImageTheReplacementUiComesFirst) {
  const Entries metadata = {{Key("orv_type/custom_ui_extended"), "epg"},
                            {Key("orv_data/custom_ui_cold_boot_opt"), "background_img"}};
  EXPECT_TRUE(Mentions(InstallOf(metadata), "the replacement UI of"));
  EXPECT_TRUE(Mentions(RemovalOf(metadata), "takes epg over once more"));
}

TEST(CliExplainEffects, LayersCleanUpFromTheOutermostAfterTheRecord) {
  const auto lines = RemovalOf({{Key("orv_type/ch_feeder_custom"), "extended"},
                                {Key("orv_type/ch_feeder_standard"), "extended"}});
  std::vector<std::string> order;
  for (const auto& line : lines) {
    if (line.find("is deleted when") != std::string::npos) {
      order.push_back(line.substr(0, line.find(':')));
    } else if (line == "the record and its row are deleted") {
      order.push_back("record");
    }
  }
  EXPECT_EQ(order, (std::vector<std::string>{"record", "ch_feeder_standard", "ch_feeder_custom"}));
}

TEST(CliExplainEffects, AnEffectNamesTheCallThatProvesIt) {
  const auto effects = EffectsOf({{Key("orv_type/custom_ui_standard"), "info"}});
  const auto started = std::find_if(effects.begin(), effects.end(), [](const Effect& effect) {
    return effect.sentence == "pkg.ui is started in the background";
  });
  ASSERT_NE(started, effects.end());
  EXPECT_EQ(started->call, "app_control_set_app_id");
  EXPECT_EQ(started->argument, "pkg.ui");
}

TEST(CliExplainEffects, WithoutTheAppNoCallIsNamed) {
  for (const auto& effect : EffectsOf({{Key("orv_type/ch_feeder_custom"), "extended"}})) {
    EXPECT_NE(effect.call, "app_control_set_app_id") << effect.sentence;
    EXPECT_EQ(effect.call.empty(), effect.argument.empty()) << effect.sentence;
  }
}

TEST(CliExplainChanges, TypesAreReportedAsRemovedAddedAndKept) {
  const Ruling ruling = RuleOnPackage(Package(
      {{Key("orv_type/ch_feeder_custom"), "b"}, {Key("orv_type/custom_ui_standard"), "info"}}));
  EXPECT_EQ(TellTypeChanges(ruling, {{"ch_feeder_custom", "a"}, {"ch_feeder_standard", "x"}}),
            (std::vector<std::string>{
                "ch_feeder_custom: is kept, \"a\" becomes \"b\"", "ch_feeder_standard: is removed",
                "custom_ui_standard: is added, but has no effect until the package is "
                "uninstalled and installed again"}));
}

TEST(CliExplainChanges, WithoutATypeTheRecordIsDeleted) {
  EXPECT_EQ(
      TellTypeChanges(RuleOnPackage(Package({})), {{"ch_feeder_custom", "a"}}),
      std::vector<std::string>{"no type is left: the app is stopped and its record is deleted"});
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

TEST(CliExplainText, FindingsAreOnThePageAndInTheJson) {
  Explanation explanation;
  explanation.findings = {MakeFinding(Message::NoUiApp)};
  std::ostringstream out;
  PrintExplanation(out, Package({}), explanation);
  EXPECT_NE(out.str().find("\nFindings:\n  - warning: The package has no UI application"),
            std::string::npos);
  EXPECT_EQ(ToJson(Package({}), explanation)["findings"][0]["id"], "no-ui-app");
}

TEST(CliExplainText, TheJsonHasTheVerdictOfEachKey) {
  const PackageFacts package =
      Package({{Key("orv_type/custom_ui_standard"), "info"}, {Key("orv_type"), ""}});
  Explanation explanation;
  explanation.ruling = RuleOnPackage(package);
  const Json::Value json = ToJson(package, explanation);
  EXPECT_TRUE(json["channel_bound"].asBool());
  EXPECT_EQ(json["keys"][0]["verdict"], "taken");
  EXPECT_EQ(json["keys"][1]["verdict"], "error");
}

}  // namespace
}  // namespace desk::cli
