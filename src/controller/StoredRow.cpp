// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/StoredRow.h"

#include <json/json.h>

#include <stdexcept>
#include <utility>

#include "common/JsonText.h"
#include "common/Log.h"

namespace {

/// Only an object or null can be walked. Anything else was not written by this daemon.
void RequireObject(const Json::Value& rValue) {
  if (!rValue.isObject() && !rValue.isNull()) {
    throw std::invalid_argument("no JSON object");
  }
}

MetadataMap ToMetadataMap(const Json::Value& rRoot) {
  RequireObject(rRoot);
  MetadataMap metadata;
  for (auto type = rRoot.begin(); type != rRoot.end(); ++type) {
    RequireObject(*type);
    if (type->empty()) {
      continue;
    }
    auto& rEntries = metadata[type.name()];
    for (auto entry = type->begin(); entry != type->end(); ++entry) {
      rEntries.emplace_hint(rEntries.end(), entry.name(), entry->asString());
    }
  }
  return metadata;
}

}  // namespace

bool DecodeStoredRow(std::map<std::string, std::string>& rColumns, StoredRow& rRow) {
  rRow.info.m_sPackageID = std::move(rColumns["package_id"]);
  rRow.info.m_sAppID = std::move(rColumns["app_id"]);
  rRow.info.m_sWidgetID = std::move(rColumns["widget_id"]);
  rRow.info.m_sServiceID = std::move(rColumns["service_id"]);
  rRow.info.m_sVersion = std::move(rColumns["version"]);

  const std::string& rVariables = rColumns["variables"];
  Json::Value root;
  if (!JsonText::Parse(rVariables, root)) {
    ORV_LOG_DEBUG("[Debug] Invalid Json Str : %s", rVariables.c_str());
    return false;
  }
  rRow.metadata = ToMetadataMap(root);
  return true;
}
