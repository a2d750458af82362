// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Every entry of the tables of exceptions is still needed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "fault/child.h"
#include "fault/expectations.h"
#include "fault/paths.h"

namespace fault {
namespace {

/// Collects all calls of all paths.
class TheTables : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    for (const Path& path : Paths()) {
      const Report report = RunInChild({path.name, std::nullopt, false});
      s_callTexts.insert(s_callTexts.end(), report.callTexts.begin(), report.callTexts.end());
      for (const auto& [call, count] : report.calls) {
        s_callTexts.push_back(call + (path.IsStart() ? "(at start)" : "(later)"));
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
  for (const LogException& entry : LogExceptions()) {
    EXPECT_TRUE(IsMade(entry.call, entry.args)) << entry.call << " " << entry.args;
    EXPECT_FALSE(entry.reason.empty()) << entry.call;
  }
  for (const MissedPackage& entry : MissedPackages()) {
    EXPECT_TRUE(IsMade(entry.call, entry.args)) << entry.call << " " << entry.args;
    EXPECT_FALSE(entry.reason.empty()) << entry.call;
  }
  for (const Leak& leak : Leaks()) {
    EXPECT_TRUE(leak.call.empty() || IsMade(leak.call, "")) << leak.call;
    EXPECT_FALSE(leak.reason.empty()) << leak.kind;
  }
}

}  // namespace
}  // namespace fault
