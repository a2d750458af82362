// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// A temporarily unwritable store, on the paths that write it.
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
  std::string path;
  std::string error;  ///< the log text of the failure
};

std::ostream& operator<<(std::ostream& stream, const Write& write) {
  return stream << write.path;
}

class AWriteOfTheStore : public testing::TestWithParam<Write> {
 protected:
  static Report RunWith(StoreState state) {
    return RunInChild({GetParam().path, std::nullopt, false, state});
  }
  static std::vector<std::string> ProblemsAfterRestart() {
    return WhatIsWrongAfterRestart(RunInChild({GetParam().path, std::nullopt, true}));
  }
};

TEST_P(AWriteOfTheStore, FailsWhileAnotherProgramHasItLockedAndNoLonger) {
  const Report report = RunWith(StoreState::Locked);
  EXPECT_THAT(report.end, IsEmpty());
  EXPECT_THAT(report.log, HasLog(GetParam().error));
  EXPECT_THAT(report.problems, IsEmpty());
  EXPECT_THAT(ProblemsAfterRestart(), IsEmpty());
}

TEST_P(AWriteOfTheStore, FailsWhileItIsReadOnlyUntilARestart) {
  const Report report = RunWith(StoreState::ReadOnly);
  EXPECT_THAT(report.end, IsEmpty());
  EXPECT_THAT(report.log, HasLog(GetParam().error));
  EXPECT_THAT(report.problems,
              testing::ElementsAre("a new package got no row", "a new package got no channel"));
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
                         [](const auto& write) { return write.param.path; });

}  // namespace
}  // namespace fault
