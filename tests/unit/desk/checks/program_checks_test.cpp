// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "desk/checks/package_checks.h"
#include "facts.h"
#include "package_maker.h"

namespace desk {
namespace {

TEST(ProgramChecks, AServiceThatCannotRunIsAFinding) {
  const TemporaryDirectory directory;
  WriteFile(directory.Path() + "/res/wgt/bin/feed", "#!/bin/sh\r\n");
  PackageFacts package = Package({});
  package.apps.push_back({"pkg.service", "service", {}, "bin/feed"});
  const auto findings = CheckPrograms(package, directory.Path());
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(ToLine(findings[0]),
            "error: The service pkg.service cannot run on a desk: bin/feed: its interpreter "
            "`/bin/sh\\r` does not exist. Convert the line ends: sed -i 's/\\r$//' feed "
            "[service-cannot-run]");
}

}  // namespace
}  // namespace desk
