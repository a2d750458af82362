// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace desk::cli {

/// Converts one argument of `tv port send` to an entry of "bundle" in `port.send`:
/// key=text, key:int=5 (four bytes, lowest first), key:bytes=0a0b (hex), key:array=a,b (strings).
/// Throws Failure (Usage).
Json::Value ParseBundleWord(const std::string& word);
Json::Value ParseBundle(const std::vector<std::string>& words);

/// An entry of a received bundle as "key=value", with bytes in hex.
std::string BundleEntryText(const Json::Value& entry);

/// Converts "key=value" arguments to an object of strings, the extra data of a launch. Throws
/// Failure (Usage).
Json::Value ParsePairs(const std::vector<std::string>& words);

std::string BytesFromHex(const std::string& hex);  ///< throws Failure (Usage)
std::string HexOf(const std::string& bytes);

}  // namespace desk::cli
