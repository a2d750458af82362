// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <map>
#include <string>
#include <vector>

/// What the two custom-UI types have in common: the list of names that is their metadata value, and
/// the settings key in which they announce themselves, one member each.
namespace CustomUITypes {

/// The members of an app's announcement that both types send. rData is the data in force; a
/// cold-boot option that is missing or empty reads "default".
Json::Value MakeAppInfo(const std::string& rPackageID, const std::string& rAppID,
                        const std::string& rWidgetID,
                        const std::map<std::string, std::string>& rData);

/// Sets one member of the settings key's JSON object, or empties it with bClear, and leaves the
/// other members alone. Nothing locks the key between the reading and the writing. False, and the
/// key untouched, when it holds no JSON object. Throws std::logic_error when there is no such key.
bool WriteAppInfoVconfKey(const std::string& rMember, const Json::Value& rAppInfo, bool bClear);

/// Cuts the text at each comma and appends the numbers of the names that are known, in the order of
/// the text. Names are compared as they stand, blanks included.
template <typename Type>
void AppendKnownNames(const std::string& rText, const std::map<std::string, Type>& rNames,
                      std::vector<Type>& rTypes) {
  std::size_t uBegin = 0;
  for (;;) {
    const std::size_t uEnd = rText.find(',', uBegin);
    const auto it = rNames.find(rText.substr(uBegin, uEnd - uBegin));
    if (it != rNames.end()) rTypes.push_back(it->second);
    if (uEnd == std::string::npos) return;
    uBegin = uEnd + 1;
  }
}

}  // namespace CustomUITypes
