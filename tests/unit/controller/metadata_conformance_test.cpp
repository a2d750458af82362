// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// `tv explain` implements the daemon's metadata rules a second time. Here both read the same
// generated packages, and must agree on every key, the layers, their values and the outcome.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "controller/AppTypeRegistry.h"
#include "desk/checks/metadata_rules.h"
#include "unit/controller/creator_fixture.h"

namespace {

using Outcome = desk::Ruling::Outcome;
using Rule = desk::KeyRuling::Rule;

constexpr int PACKAGES = 4000;
constexpr unsigned SEED = 20200101;

/// Makes packages of everything that can be right or wrong about metadata. The same seed always
/// gives the same packages.
class Generator {
 public:
  fake::Package Make(int number) {
    fake::Package package;
    package.id = "p" + std::to_string(number);
    const int apps = Number(0, 3);
    for (int i = 0; i < apps; ++i) {
      fake::App app;
      app.id = package.id + ".a" + std::to_string(i);
      app.component = Number(0, 1) == 0 ? PACKAGE_INFO_UIAPP : PACKAGE_INFO_SERVICEAPP;
      const int entries = Number(0, 6);
      for (int j = 0; j < entries; ++j) {
        app.metadata.emplace_back(Key(), Pick({"", "extended", "standard", "info", "epg", "x,y"}));
      }
      package.apps.push_back(app);
    }
    return package;
  }

 private:
  int Number(int least, int most) {
    return std::uniform_int_distribution<int>(least, most)(m_random);
  }
  std::string Pick(const std::vector<std::string>& choices) {
    return choices[static_cast<std::size_t>(Number(0, static_cast<int>(choices.size()) - 1))];
  }

  std::string Key() {
    if (Number(0, 60) == 0) {
      return METADATA_PREFIX + Pick({"orv_type", "orv_data"});
    }
    const std::string prefix = Number(0, 9) != 0
                                   ? METADATA_PREFIX
                                   : Pick({"", "http://example.org/", "x" + METADATA_PREFIX,
                                           METADATA_PREFIX.substr(0, METADATA_PREFIX.size() - 1)});
    const std::string between = Number(0, 11) != 0 ? "" : Pick({"x/", "/", "orv_data/", "orv_"});
    const std::string word =
        Number(0, 14) != 0 ? Pick({"orv_type", "orv_data"})
                           : Pick({"", "orv_typ", "ORV_TYPE", "orv_dataorv_type", "orv_kind"});
    const std::string separator = Number(0, 9) != 0 ? "/" : Pick({"", ".", "//", "orv_type"});
    return prefix + between + word + separator + Name();
  }

  std::string Name() {
    return Pick({"ch_feeder_standard", "ch_feeder_custom", "custom_ui_standard",
                 "custom_ui_extended", "channel_data_url", "schedule_data_url", "ch.app.boosting",
                 "expiration_date_str", "custom_ui_cold_boot_opt", "ch_feeder", "unknown",
                 Number(0, 9) == 0 ? "" : "ch_feeder_standard"});
  }

  std::mt19937 m_random{SEED};
};

desk::PackageFacts FactsOf(const fake::Package& package) {
  desk::PackageFacts facts;
  facts.id = package.id;
  facts.version = package.version;
  for (const auto& app : package.apps) {
    facts.apps.push_back(
        {app.id, app.component == PACKAGE_INFO_UIAPP ? "ui" : "service", app.metadata, ""});
  }
  return facts;
}

class MetadataConformance : public CreatorTest {
 protected:
  /// What the daemon makes of the package, by its results and its log.
  Outcome Create(const fake::Package& package) {
    fake::AddPackage(package);
    Forget();
    if (Creator().CreateApp(package.id)) {
      return Outcome::ChannelBound;
    }
    const auto logs = fake::LogTexts();
    const std::string ordinary = "[Debug] " + package.id + " is not ORV Type.";
    return std::find(logs.begin(), logs.end(), ordinary) != logs.end() ? Outcome::NoMetadata
                                                                       : Outcome::NoKnownType;
  }

  /// The daemon's log of the keys: "not supported", an exception, or the name and value.
  static std::vector<std::string> KeyLogs() {
    std::vector<std::string> lines;
    for (const auto& text : fake::LogTexts()) {
      if (text.rfind("[Debug] The metadata is not supported.", 0) == 0 ||
          text.find(", sDataKey : ") != std::string::npos ||
          text.rfind("[ERROR] exception : ", 0) == 0) {
        // The library words its own exception.
        lines.push_back(text[1] == 'E' ? "an exception" : text);
      }
    }
    return lines;
  }

  static std::vector<std::string> ExpectedKeyLogs(const desk::Ruling& ruling,
                                                  const std::string& package) {
    std::vector<std::string> lines;
    for (const auto& key : ruling.keys) {
      if (key.rule == Rule::OtherNamespace || key.rule == Rule::NoWord) {
        lines.push_back("[Debug] The metadata is not supported.[" + key.key + "]");
      } else if (key.rule != Rule::NameMissing) {
        lines.push_back("[Info] packageID : " + package + ", sDataKey : " + key.name +
                        ", sDataValue : " + key.value);
      } else {
        lines.push_back("an exception");
      }
    }
    return lines;
  }

  void CompareRecord(const desk::Ruling& ruling, const std::string& package) {
    AppInfo* record = Find(package);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(record->m_sAppID, ruling.uiApp);
    EXPECT_EQ(record->m_sServiceID, ruling.serviceApp);
    MetadataMap held;
    record->GetAllMetadata(held);
    std::map<std::string, std::string> types;
    std::map<std::string, std::string> data;
    std::vector<std::string> chain = {"orv_app"};
    for (const auto& layer : ruling.layers) {
      types[layer.type] = layer.value;
      data.insert(layer.data.begin(), layer.data.end());
      chain.insert(chain.begin(), layer.type);
    }
    EXPECT_EQ(held["orv_type"], types);
    EXPECT_EQ(held["orv_data"], data);
    EXPECT_EQ(TakeApart(package), chain);
  }
};

TEST_F(MetadataConformance, BothKnowTheSameTypes) {
  std::vector<std::string> names;
  for (const auto& type : GetAppTypes()) {
    names.push_back(type.first);
  }
  std::sort(names.begin(), names.end());
  EXPECT_EQ(names, desk::KnownTypeNames());
}

TEST_F(MetadataConformance, ExplainAgreesWithTheCreatorOnEveryPackage) {
  Generator generator;
  std::map<Outcome, int> outcomes;
  std::map<Rule, int> rules;
  std::size_t mostLayers = 0;
  for (int i = 0; i < PACKAGES && !HasFailure(); ++i) {
    const fake::Package package = generator.Make(i);
    const desk::Ruling ruling = desk::RuleOnPackage(FactsOf(package));
    SCOPED_TRACE("package " + std::to_string(i));
    const Outcome outcome = Create(package);
    EXPECT_EQ(outcome, ruling.outcome);
    EXPECT_EQ(KeyLogs(), ExpectedKeyLogs(ruling, package.id));
    if (outcome == Outcome::ChannelBound) {
      CompareRecord(ruling, package.id);
    }
    ++outcomes[outcome];
    mostLayers = std::max(mostLayers, ruling.layers.size());
    for (const auto& key : ruling.keys) {
      ++rules[key.rule];
    }
  }
  // The generator reaches every rule and every outcome often enough to mean something.
  EXPECT_EQ(outcomes.size(), 3U);
  EXPECT_EQ(rules.size(), 9U);
  EXPECT_GE(mostLayers, 3U);
  for (const auto& [rule, count] : rules) {
    EXPECT_GE(count, 20) << "rule " << static_cast<int>(rule);
  }
}

}  // namespace
