// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// A store that cannot be written for a while, on the roads that write it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fault/child.h"
#include "fault/expectations.h"
#include "support/log_matchers.h"

namespace fault {
namespace {

using support::HasLog;
using testing::IsEmpty;

struct Write {
  std::string road;
  std::string error;  ///< that tells of it
};

std::ostream& operator<<(std::ostream& stream, const Write& write) {
  return stream << write.road;
}

class AWriteOfTheStore : public testing::TestWithParam<Write> {
 protected:
  static Report TravelWith(StoreState state) {
    return RunInChild({GetParam().road, std::nullopt, false, state});
  }
  static std::vector<std::string> ProblemsAfterRestart() {
    return WhatIsWrongAfterRestart(RunInChild({GetParam().road, std::nullopt, true}));
  }
};

TEST_P(AWriteOfTheStore, FailsWhileAnotherProgramHasItLockedAndNoLonger) {
  const Report report = TravelWith(StoreState::kLocked);
  EXPECT_THAT(report.end, IsEmpty());
  EXPECT_THAT(report.log, HasLog(GetParam().error));
  EXPECT_THAT(report.problems, IsEmpty());
  EXPECT_THAT(ProblemsAfterRestart(), IsEmpty());
}

TEST_P(AWriteOfTheStore, FailsWhileItIsReadOnlyUntilARestart) {
  const Report report = TravelWith(StoreState::kReadOnly);
  EXPECT_THAT(report.end, IsEmpty());
  EXPECT_THAT(report.log, HasLog(GetParam().error));
  EXPECT_THAT(report.problems,
              testing::ElementsAre("a fresh package got no row", "a fresh package got no channel"));
  EXPECT_THAT(ProblemsAfterRestart(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(On, AWriteOfTheStore,
                         testing::Values(Write{"InstallOfAWebFeeder", "[ERROR] insert error."},
                                         Write{"InstallBeforeTheWidgetIdIsKnown",
                                               "[ERROR] insert error."},
                                         Write{"UpdateOfABanner", "[ERROR] update error."},
                                         Write{"UpdateThatTradesTypes", "[ERROR] update error."},
                                         Write{"UninstallOfABanner", "[ERROR] delete error."},
                                         Write{"Validation", "[ERROR] delete error."},
                                         Write{"MessageWithADueTime", "[ERROR] update error."}),
                         [](const auto& write) { return write.param.road; });

}  // namespace
}  // namespace fault
