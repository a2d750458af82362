// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "desk/checks/metadata_rules.h"
#include "desk/common/paths.h"

namespace desk::cli {

/// What the daemon's store says about a package.
struct HeldRecord {
  std::string version;
  std::map<std::string, std::string> types;  ///< `orv_type` of its row
};

/// Nothing when the store has no row of the package, or there is no readable store.
std::optional<HeldRecord> FindRecord(const DeskPaths& paths, const std::string& package);

/// How the desk's state differs from what the package promises, one line each: a record that the
/// daemon lacks or has of another version, an unpack that failed. For an installed package only.
/// Reads files of the desk; changes nothing.
std::vector<std::string> TellState(const DeskPaths& paths, const PackageFacts& package,
                                   const Ruling& ruling, const std::optional<HeldRecord>& record);

}  // namespace desk::cli
