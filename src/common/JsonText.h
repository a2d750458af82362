// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <istream>
#include <string>

/// JSON as the daemon writes and reads it: on disk, in settings keys, for the channel framework.
namespace JsonText {

/// One line, members in ascending order, closing newline. Text that is not UTF-8 is not preserved.
std::string Write(const Json::Value& rValue);

/// Comments are accepted. On false, rRoot holds what was read before the error, and *pErrors, if
/// given, the parser's messages. Throws std::exception when the nesting exceeds the library's
/// limit.
bool Parse(const std::string& rText, Json::Value& rRoot, std::string* pErrors = nullptr);

/// The same for the rest of a stream.
bool Parse(std::istream& rStream, Json::Value& rRoot, std::string* pErrors = nullptr);

}  // namespace JsonText
