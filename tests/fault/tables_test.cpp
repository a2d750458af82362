// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// No exception may outlive its reason.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "fault/child.h"
#include "fault/expectations.h"
#include "fault/roads.h"

namespace fault {
namespace {

/// All calls of all roads.
class TheTables : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    for (const Road& road : Roads()) {
      const Report report = RunInChild({road.name, std::nullopt, false});
      s_callTexts.insert(s_callTexts.end(), report.callTexts.begin(), report.callTexts.end());
      for (const auto& [call, count] : report.calls) {
        s_callTexts.push_back(call + (road.IsStart() ? "(at start)" : "(later)"));
      }
    }
  }

  static bool IsMade(const std::string& call, const std::string& args) {
    return std::any_of(s_callTexts.begin(), s_callTexts.end(), [&](const std::string& text) {
      return text.compare(0, call.size() + 1, call + "(") == 0 &&
             text.find(args) != std::string::npos;
    });
  }

  static std::vector<std::string> s_callTexts;
};

std::vector<std::string> TheTables::s_callTexts;

TEST_F(TheTables, SpeakOfCallsThatAreMade) {
  for (const Telling& telling : Tellings()) {
    EXPECT_TRUE(IsMade(telling.call, telling.args)) << telling.call << " " << telling.args;
    EXPECT_FALSE(telling.reason.empty()) << telling.call;
  }
  for (const Deafness& deafness : Deafnesses()) {
    EXPECT_TRUE(IsMade(deafness.call, deafness.args)) << deafness.call << " " << deafness.args;
    EXPECT_FALSE(deafness.reason.empty()) << deafness.call;
  }
  for (const Leak& leak : Leaks()) {
    EXPECT_TRUE(leak.call.empty() || IsMade(leak.call, "")) << leak.call;
    EXPECT_FALSE(leak.reason.empty()) << leak.kind;
  }
}

}  // namespace
}  // namespace fault
