// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace desk {

/// The entries of some lines of the journal, by their numbers: the file has them in the order in
/// which the calls ended. Lines that are no entries are left out.
std::vector<Json::Value> SortedEntries(const std::vector<std::string>& lines);

/// `  12 main   vconf_get_int("db/x") = 0`
std::string JournalText(const Json::Value& entry);

}  // namespace desk
