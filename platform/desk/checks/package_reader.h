// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <memory>
#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/checks/metadata_rules.h"
#include "desk/checks/scratch_directory.h"

namespace desk {

/// A package as the checks need it: what it says about itself, and a directory with the files that
/// they look at.
struct ReadablePackage {
  PackageFacts facts;
  std::string tree;                           ///< contains res/*.tmg and res/wgt/<programs>
  std::unique_ptr<ScratchDirectory> scratch;  ///< the owner of `tree`, for an archive
};

/// Reads a .wgt and unpacks its images and service programs to a temporary directory. Blocks.
/// Throws PackageError as ReadPackage does, and DeskError when there is no room.
ReadablePackage ReadArchive(const std::string& path);

/// An installed package: the reply of pkg.info, and the package's directory.
ReadablePackage ReadInstalled(const Json::Value& info, const std::string& directory);

/// All checks. Blocks.
std::vector<Finding> CheckPackage(const ReadablePackage& package, const Ruling& ruling);

}  // namespace desk
