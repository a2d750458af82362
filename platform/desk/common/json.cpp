// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/json.h"

#include <json/reader.h>
#include <json/writer.h>

#include <memory>

#include "desk/common/desk_error.h"

namespace desk {
namespace {

std::string Write(const Json::Value& value, const char* indentation) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = indentation;
  builder["emitUTF8"] = true;
  builder["commentStyle"] = "None";
  return Json::writeString(builder, value);
}

DeskError WrongMember(const char* member, const char* wanted) {
  return DeskError(DeskError::USAGE, std::string("the request's member \"") + member + "\" is no " +
                                         wanted + ": see docs/desk-protocol.md");
}

}  // namespace

std::string FormatJson(const Json::Value& value) {
  return Write(value, "");
}

std::string FormatJsonIndented(const Json::Value& value) {
  return Write(value, "  ");
}

Json::Value ParseJson(const std::string& text) {
  if (text.empty()) {
    return Json::Value(Json::objectValue);
  }
  Json::CharReaderBuilder builder;
  builder["collectComments"] = false;
  builder["failIfExtra"] = true;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  std::string errors;
  bool good = false;
  try {
    good = reader->parse(text.data(), text.data() + text.size(), &value, &errors);
  } catch (const Json::Exception& e) {
    errors = e.what();
  }
  if (!good) {
    throw DeskError(DeskError::FAILED, "not JSON: " + errors);
  }
  return value;
}

Json::Value JsonObject(std::initializer_list<std::pair<const char*, Json::Value>> members) {
  Json::Value object(Json::objectValue);
  for (const auto& [name, value] : members) {
    object[name] = value;
  }
  return object;
}

std::string RequireString(const Json::Value& request, const char* member) {
  if (!request.isObject() || !request[member].isString()) {
    throw WrongMember(member, "string");
  }
  return request[member].asString();
}

std::string OptionalString(const Json::Value& request, const char* member,
                           const std::string& fallback) {
  if (!request.isObject() || request[member].isNull()) {
    return fallback;
  }
  return RequireString(request, member);
}

int OptionalInt(const Json::Value& request, const char* member, int fallback) {
  if (!request.isObject() || request[member].isNull()) {
    return fallback;
  }
  if (!request[member].isInt()) {
    throw WrongMember(member, "number");
  }
  return request[member].asInt();
}

bool OptionalBool(const Json::Value& request, const char* member, bool fallback) {
  if (!request.isObject() || request[member].isNull()) {
    return fallback;
  }
  if (!request[member].isBool()) {
    throw WrongMember(member, "truth value");
  }
  return request[member].asBool();
}

}  // namespace desk
