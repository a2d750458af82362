// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

#include "cli/explain_rules.h"

namespace desk {

/// What the daemon will do, step by step, one sentence each without a full stop.
struct Effects {
  std::vector<std::string> install;
  std::vector<std::string> update;
  std::vector<std::string> removal;
  std::vector<std::string> warnings;  ///< what is likely not meant so
};

/// Empty but for the warnings when the package is not channel-bound.
Effects TellEffects(const PackageFacts& package, const Ruling& ruling);

/// What an update does to the types of a record that the daemon holds already: a line for each that
/// goes, comes or stays, as `orv_type` of its row tells.
std::vector<std::string> TellTypeChanges(const Ruling& ruling,
                                         const std::map<std::string, std::string>& heldTypes);

/// Bits of what a standard feeder's package brings along: 1 an app, 2 metadata files.
int PackagedDataOf(const Layer& layer);

}  // namespace desk
