// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/checks/metadata_rules.h"

namespace desk {

/// What is likely not as its author intended. All checks are callable from any thread, change
/// nothing and report problems of the package as findings, never as exceptions.

/// The metadata alone.
std::vector<Finding> CheckMetadata(const PackageFacts& package, const Ruling& ruling);

/// The image and the files that the feeders of the package need. `tree` is the directory of the
/// installed package, or one like it that contains res/*.tmg. Blocks while it reads the image.
std::vector<Finding> CheckFeeds(const PackageFacts& package, const Ruling& ruling,
                                const std::string& tree);

/// The programs of the services. `tree` has them below res/wgt/.
std::vector<Finding> CheckPrograms(const PackageFacts& package, const std::string& tree);

/// All of them, in this order.
std::vector<Finding> CheckPackage(const PackageFacts& package, const Ruling& ruling,
                                  const std::string& tree);

}  // namespace desk
