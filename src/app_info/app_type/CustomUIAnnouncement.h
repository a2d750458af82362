// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <map>
#include <string>

/// How the two custom-UI types announce their app: one member each in the JSON object of a settings
/// key.
namespace CustomUIAnnouncement {

/// The members that both types announce. rData is the data in force; a missing or empty cold-boot
/// option becomes "default".
Json::Value MakeAppInfo(const std::string& rPackageID, const std::string& rAppID,
                        const std::string& rWidgetID,
                        const std::map<std::string, std::string>& rData);

/// Sets one member of the settings key's JSON object, or empties it with bClear, and leaves the
/// other members alone. The key is not locked between reading and writing. False, and the key
/// untouched, when it does not hold a JSON object. Throws std::logic_error when the key does not
/// exist.
bool WriteAppInfoVconfKey(const std::string& rMember, const Json::Value& rAppInfo, bool bClear);

}  // namespace CustomUIAnnouncement
