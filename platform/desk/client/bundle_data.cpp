// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/client/bundle_data.h"

#include <algorithm>

#include "desk/common/base64.h"

namespace desk::client {
namespace {

Json::Value FormatEntry(const keyval_t& entry) {
  Json::Value value(Json::objectValue);
  value["key"] = entry.key;
  value["type"] = entry.type;
  if (entry.type == BUNDLE_TYPE_STR) {
    value["value"] = entry.bytes;
  } else if (entry.type == BUNDLE_TYPE_STR_ARRAY) {
    value["value"] = Json::Value(Json::arrayValue);
    for (const std::string& element : entry.array) {
      value["value"].append(element);
    }
  } else {
    value["bytes"] = ToBase64(entry.bytes);
  }
  return value;
}

keyval_t ReadEntry(const Json::Value& value) {
  keyval_t entry;
  entry.key = value["key"].asString();
  entry.type = value["type"].asInt();
  if (value.isMember("bytes")) {
    entry.bytes = FromBase64(value["bytes"].asString());
  } else if (value["value"].isArray()) {
    for (const Json::Value& element : value["value"]) {
      entry.array.push_back(element.asString());
    }
  } else {
    entry.bytes = value["value"].asString();
  }
  return entry;
}

}  // namespace

bool AddEntry(bundle& target, keyval_t entry) {
  const bool taken = std::any_of(target.entries.begin(), target.entries.end(),
                                 [&](const auto& other) { return other->key == entry.key; });
  if (!taken) {
    target.entries.push_back(std::make_unique<keyval_t>(std::move(entry)));
  }
  return !taken;
}

Json::Value FormatBundle(const bundle& source) {
  Json::Value entries(Json::arrayValue);
  for (const auto& entry : source.entries) {
    entries.append(FormatEntry(*entry));
  }
  return entries;
}

bundle ReadBundle(const Json::Value& value) {
  bundle result;
  for (const Json::Value& entry : value) {
    AddEntry(result, ReadEntry(entry));
  }
  return result;
}

}  // namespace desk::client
