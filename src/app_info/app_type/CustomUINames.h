// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

/// The metadata value of the two custom-UI types: a comma-separated list of names.
namespace CustomUINames {

/// Cuts the text at each comma and appends the numbers of the known names, in the order of the
/// text. Names are compared byte by byte, blanks included.
template <typename Type>
void AppendKnownNames(const std::string& rText, const std::map<std::string, Type>& rNames,
                      std::vector<Type>& rTypes) {
  std::size_t uBegin = 0;
  for (;;) {
    const std::size_t uEnd = rText.find(',', uBegin);
    const auto it = rNames.find(rText.substr(uBegin, uEnd - uBegin));
    if (it != rNames.end()) {
      rTypes.push_back(it->second);
    }
    if (uEnd == std::string::npos) {
      return;
    }
    uBegin = uEnd + 1;
  }
}

}  // namespace CustomUINames
