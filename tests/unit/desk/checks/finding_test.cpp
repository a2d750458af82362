// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/checks/finding.h"

#include <gtest/gtest.h>

#include <set>

#include "package_maker.h"

namespace desk {
namespace {

std::vector<Finding> OneOfEach() {
  const std::vector<std::string> arguments(9, "ARGUMENT");
  std::vector<Finding> findings;
  for (int i = 0; i < static_cast<int>(Message::Count); ++i) {
    findings.push_back(MakeFinding(static_cast<Message>(i), arguments));
  }
  return findings;
}

TEST(Finding, EachHasItsOwnIdATextAndARemedy) {
  std::set<std::string> ids;
  for (const auto& finding : OneOfEach()) {
    EXPECT_TRUE(ids.insert(finding.id).second) << finding.id;
    EXPECT_EQ(finding.text.back(), '.') << finding.id;
    EXPECT_FALSE(finding.fix.empty()) << finding.id;
    EXPECT_EQ(finding.text.find('%'), std::string::npos) << finding.text;
  }
}

TEST(Finding, EachIsInTheManual) {
  const std::string manual = ReadFile(std::string(ORV_SOURCE_DIR) + "/docs/tv.md");
  for (const auto& finding : OneOfEach()) {
    const std::string row = "| `" + finding.id + "` | " + SeverityName(finding.severity) + " |";
    EXPECT_NE(manual.find(row), std::string::npos) << "docs/tv.md lacks: " << row;
  }
}

TEST(Finding, AMissingArgumentIsAnError) {
  EXPECT_THROW(MakeFinding(Message::UnknownType, {"one"}), std::out_of_range);
}

TEST(Finding, TheJsonHasAllMembers) {
  const Json::Value list = ToJson({MakeFinding(Message::NoServiceApp, {"ch_feeder_custom"})});
  EXPECT_EQ(list[0]["id"], "no-service-app");
  EXPECT_EQ(list[0]["severity"], "error");
  EXPECT_EQ(list[0]["text"], "ch_feeder_custom: the package has no service application to launch.");
  EXPECT_EQ(list[0]["fix"], "Add a tizen:service.");
}

}  // namespace
}  // namespace desk
