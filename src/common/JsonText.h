// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/json.h>

#include <istream>
#include <string>

/// The daemon's JSON dialect on disk, in settings keys and towards the channel framework.
namespace JsonText {

/// One line, members in ascending order, closing newline. Text that is no UTF-8 does not survive.
std::string Write(const Json::Value& rValue);

/// Comments are accepted. False leaves rRoot undefined and, where pErrors is given, puts the
/// reader's explanation there. Throws std::exception on nesting deeper than the library bears.
bool Parse(const std::string& rText, Json::Value& rRoot, std::string* pErrors = nullptr);

/// The same for the rest of a stream.
bool Parse(std::istream& rStream, Json::Value& rRoot, std::string* pErrors = nullptr);

}  // namespace JsonText
