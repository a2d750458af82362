// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

#include "desk/checks/metadata_rules.h"

namespace desk::cli {

enum class Occasion { Install, Update, Removal };

/// "install", "update" or "removal".
const char* OccasionName(Occasion occasion);

/// One thing that the daemon will do.
struct Effect {
  Occasion occasion = Occasion::Install;
  std::string type;      ///< app type, or empty for the record as a whole
  std::string sentence;  ///< without the type, without a full stop
  /// A platform call that the daemon certainly makes then, and one of its arguments; both empty
  /// when the effect shows in no call of its own or depends on the installed version.
  std::string call;
  std::string argument;
};

/// In the order in which the daemon does it. Empty when the package is not channel-bound. Pure.
std::vector<Effect> TellEffects(const PackageFacts& package, const Ruling& ruling);

/// One line for each effect of the occasion: "<type>: <sentence>".
std::vector<std::string> LinesOf(const std::vector<Effect>& effects, Occasion occasion);

/// What an update does to the app types of a record that the daemon already has: one line for each
/// type that is removed, kept or added, compared with `orv_type` of its row in the store.
std::vector<std::string> TellTypeChanges(const Ruling& ruling,
                                         const std::map<std::string, std::string>& heldTypes);

}  // namespace desk::cli
