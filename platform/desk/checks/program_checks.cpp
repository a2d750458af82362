// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/checks/package_checks.h"
#include "desk/package/program_file.h"

namespace desk {

std::vector<Finding> CheckPrograms(const PackageFacts& package, const std::string& tree) {
  std::vector<Finding> findings;
  for (const auto& app : package.apps) {
    if (app.component != "service" || app.program.empty()) {
      continue;
    }
    const auto trouble = WhyNotRunnable(tree + "/res/wgt/" + app.program);
    if (trouble) {
      findings.push_back(MakeFinding(Message::ServiceCannotRun,
                                     {app.id, app.program + ": " + trouble->reason, trouble->fix}));
    }
  }
  return findings;
}

}  // namespace desk
