// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Likely mistakes in a package's metadata.
#include <gtest/gtest.h>

#include "desk/checks/package_checks.h"
#include "facts.h"

namespace desk {
namespace {

using Names = std::vector<std::string>;

std::vector<Finding> CheckFacts(const PackageFacts& package) {
  return CheckMetadata(package, RuleOnPackage(package));
}

std::vector<Finding> Check(const Entries& metadata) {
  return CheckFacts(Package(metadata));
}

Entries Feeder(const std::string& channel, const std::string& schedule) {
  return {{Key("orv_type/ch_feeder_standard"), "standard"},
          {Key("orv_data/channel_data_url"), channel},
          {Key("orv_data/schedule_data_url"), schedule}};
}

std::string OnlyLine(const Entries& metadata) {
  const auto findings = Check(metadata);
  return findings.size() == 1 ? ToLine(findings[0]) : std::to_string(findings.size()) + " findings";
}

TEST(MetadataChecks, APackageAsItShouldBeHasNoFindings) {
  EXPECT_EQ(Ids(Check(Feeder("file://channel.json", "file://schedule.json"))), Names{});
  EXPECT_EQ(Ids(Check(Feeder("https://example.org/c", "http://example.org/s"))), Names{});
  EXPECT_EQ(Ids(Check({{"http://example.org/x", "1"}})), Names{});
}

TEST(MetadataChecks, AMisspeltDataKeyNamesTheNearest) {
  Entries metadata = Feeder("https://a/c", "https://a/s");
  metadata.emplace_back(Key("orv_data/ch.app.bosting"), "true");
  EXPECT_EQ(OnlyLine(metadata),
            "warning: \"ch.app.bosting\" is not a data key that the daemon uses. Did you mean "
            "\"ch.app.boosting\"? [unknown-data-key]");
}

TEST(MetadataChecks, AMisspeltTypeNamesTheNearest) {
  EXPECT_EQ(OnlyLine({{Key("orv_type/ch_feeder_standart"), ""}}),
            "warning: \"ch_feeder_standart\" is not an app type that the daemon knows. Did you "
            "mean \"ch_feeder_standard\"? [unknown-type]");
}

TEST(MetadataChecks, AStrangeNameGetsTheListOfNames) {
  EXPECT_TRUE(Mentions(Texts(Check({{Key("orv_type/x"), ""}})),
                       "Use one of ch_feeder_custom, ch_feeder_standard, custom_ui_extended, "
                       "custom_ui_standard."));
}

TEST(MetadataChecks, AMisspeltPrefixIsReported) {
  const auto findings = Check({{"http://kalmora.com/metadata/orv_type/ch_feeder_custom", ""}});
  EXPECT_EQ(Ids(findings), Names{"other-prefix"});
}

TEST(MetadataChecks, AKeyWithoutEitherWordIsReported) {
  EXPECT_EQ(Ids(Check({{Key("orv_kind/x"), ""}})), Names{"unknown-word"});
}

TEST(MetadataChecks, AKeyWithoutANameIsAnError) {
  const auto findings = Check({{Key("orv_type"), ""}});
  ASSERT_EQ(Ids(findings), Names{"name-missing"});
  EXPECT_EQ(findings[0].severity, Severity::Error);
}

TEST(MetadataChecks, ADataKeyOfAnotherTypeNamesTheType) {
  Entries metadata = Feeder("https://a/c", "https://a/s");
  metadata.emplace_back(Key("orv_data/expiration_date_str"), "");
  EXPECT_EQ(OnlyLine(metadata),
            "warning: The data key \"expiration_date_str\" has no effect: no app type of this "
            "package uses it. Add the app type that it belongs to (ch_feeder_custom), or remove "
            "the key. [foreign-data-key]");
}

TEST(MetadataChecks, AMissingUrlIsReported) {
  EXPECT_EQ(Ids(Check({{Key("orv_type/ch_feeder_standard"), "x"},
                       {Key("orv_data/channel_data_url"), "https://a"}})),
            Names{"no-feed-url"});
}

TEST(MetadataChecks, AShortUrlBesideAFileUrlIsReported) {
  const auto texts = Texts(Check(Feeder("file://a.json", "")));
  EXPECT_TRUE(Mentions(texts, "short-url: ch_feeder_standard: schedule_data_url is \"\", shorter"));
}

TEST(MetadataChecks, AUrlOfSixCharactersIsLongEnough) {
  EXPECT_EQ(Ids(Check(Feeder("file://a.json", "http:"))), Names{"short-url"});
  EXPECT_EQ(Ids(Check(Feeder("file://a.json", "http:/"))), Names{"web-url-rewritten"});
}

TEST(MetadataChecks, AWebUrlBesideAFileUrlIsReported) {
  EXPECT_EQ(Ids(Check(Feeder("file://a.json", "http://b/s"))), Names{"web-url-rewritten"});
}

TEST(MetadataChecks, AFileUrlNeedsTwoSlashes) {
  EXPECT_EQ(Ids(Check(Feeder("file://a.json", "file:/b.json"))), Names{"file-url-form"});
  EXPECT_EQ(Ids(Check(Feeder("file:a.json", "file://b.json"))), Names{"file-url-form"});
  EXPECT_EQ(Ids(Check(Feeder("file:///a.json", "file://b.json"))), Names{});
}

TEST(MetadataChecks, AnUnknownSchemeIsReported) {
  EXPECT_EQ(Ids(Check(Feeder("HTTP://b", "https://s"))), Names{"unknown-scheme"});
}

TEST(MetadataChecks, OnlyTheValueTrueBoosts) {
  Entries metadata = Feeder("https://a/c", "https://a/s");
  metadata.emplace_back(Key("orv_data/ch.app.boosting"), "True");
  EXPECT_EQ(Ids(Check(metadata)), Names{"boost-value"});
  metadata.back().second = "true";
  EXPECT_EQ(Ids(Check(metadata)), Names{});
}

TEST(MetadataChecks, ASingleQuoteInAUsedValueIsAnError) {
  EXPECT_EQ(Ids(Check(Feeder("https://a/it's", "https://a/s"))), Names{"single-quote"});
}

TEST(MetadataChecks, ASingleQuoteInAnUnusedValueIsHarmless) {
  Entries metadata = Feeder("https://a/c", "https://a/s");
  metadata.emplace_back(Key("orv_data/colour"), "it's");
  EXPECT_EQ(Ids(Check(metadata)), Names{"unknown-data-key"});
}

TEST(MetadataChecks, ACustomFeederNeedsAServiceAndAValue) {
  EXPECT_EQ(Ids(Check({{Key("orv_type/ch_feeder_custom"), ""}})),
            (Names{"no-service-app", "empty-feeder-value"}));
}

TEST(MetadataChecks, APackageWithoutUiApplicationIsReported) {
  PackageFacts package = Package({{Key("orv_type/ch_feeder_custom"), "x"}});
  package.apps[0].component = "service";
  EXPECT_EQ(Ids(CheckFacts(package)), Names{"no-ui-app"});
}

TEST(MetadataChecks, AnUnknownScreenIsReported) {
  EXPECT_EQ(OnlyLine({{Key("orv_type/custom_ui_extended"), "epg, channel_list"}}),
            "warning: custom_ui_extended: \" channel_list\" in its value is ignored. Blanks and "
            "case count. Use channel_list and epg, separated by commas. [list-entry]");
}

TEST(MetadataChecks, AnUnknownColdBootOptionIsReported) {
  const auto with = [](const std::string& option) {
    return Ids(Check({{Key("orv_type/custom_ui_standard"), "info"},
                      {Key("orv_data/custom_ui_cold_boot_opt"), option}}));
  };
  EXPECT_EQ(with("background"), Names{"cold-boot-value"});
  for (const char* known : {"", "default", "invisible", "background_img"}) {
    EXPECT_EQ(with(known), Names{}) << known;
  }
}

}  // namespace
}  // namespace desk
