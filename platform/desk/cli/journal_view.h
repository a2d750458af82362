// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <optional>
#include <string>
#include <vector>

#include "desk/common/timestamp.h"

namespace desk::cli {

/// The journal's entries in these lines, in ascending order of their numbers: the file has them in
/// the order in which the calls ended. Lines that are not entries are left out.
std::vector<Json::Value> SortedEntries(const std::vector<std::string>& lines);

/// When the call of an entry began; nothing for an entry without a time.
std::optional<Timestamp> TimeOf(const Json::Value& entry);

/// `vconf_get_int("db/x") = 0`
std::string CallText(const Json::Value& entry);

/// `11-21 00:34:58.850   12 main   vconf_get_int("db/x") = 0`
std::string JournalText(const Json::Value& entry);

/// Which entries are wanted. An empty member accepts all.
struct JournalFilter {
  std::string call;    ///< a name, or a pattern with * and ?
  std::string thread;  ///< the same
  std::optional<Timestamp> since;
  bool Wants(const Json::Value& entry) const;
};

}  // namespace desk::cli
