// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace desk {

/// One word of `tv port send`, for "bundle" of `port.send`:
/// key=text, key:int=5 (four bytes, lowest first), key:bytes=0a0b (hex), key:array=a,b (strings).
/// Throws Failure (Usage).
Json::Value ParseBundleWord(const std::string& word);
Json::Value ParseBundle(const std::vector<std::string>& words);

/// One entry of a received bundle as "key=value", bytes in hex.
std::string BundleEntryText(const Json::Value& entry);

/// "key=value" words as an object of strings, for the extra data of a launch. Throws Failure
/// (Usage).
Json::Value ParsePairs(const std::vector<std::string>& words);

std::string BytesFromHex(const std::string& hex);  ///< throws Failure (Usage)
std::string HexOf(const std::string& bytes);
std::string Base64Of(const std::string& bytes);
std::string BytesFromBase64(const std::string& text);  ///< stops at what is no base64

}  // namespace desk
