// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <initializer_list>
#include <string>
#include <utility>

namespace desk {

/// One line without a newline at its end, members in ascending order. Only quotes, backslashes and
/// control characters of a string are escaped; bytes that are not UTF-8 are copied unchanged.
std::string FormatJson(const Json::Value& value);

/// The same in several lines, for people and for files that people may edit.
std::string FormatJsonIndented(const Json::Value& value);

/// Throws DeskError (Failed) when the text is not exactly one JSON value. An empty text is an empty
/// object.
Json::Value ParseJson(const std::string& text);

/// An object of these members; a later one replaces an earlier one of the same name.
Json::Value JsonObject(std::initializer_list<std::pair<const char*, Json::Value>> members);

/// A member of a request. The first throws DeskError (Usage) when the member is absent or of
/// another type; the others return the fallback when it is absent or null.
std::string RequireString(const Json::Value& request, const char* member);
std::string OptionalString(const Json::Value& request, const char* member,
                           const std::string& fallback);
int OptionalInt(const Json::Value& request, const char* member, int fallback);
bool OptionalBool(const Json::Value& request, const char* member, bool fallback);

}  // namespace desk
