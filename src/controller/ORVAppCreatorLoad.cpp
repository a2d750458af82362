// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <json/json.h>

#include <stdexcept>
#include <utility>

#include "app_info/AppInfoCache.h"
#include "common/JsonText.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/ORVAppCreator.h"

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

void ORVAppCreator::LoadAndCreateAppInfo() {
  AppInfoDB::RowMap rows;
  if (!AppInfoCache::GetInstance()->LoadData(rows)) {
    ORV_LOG_ERROR("[ERROR] Cannot load the stored data.");
    return;
  }
  try {
    while (!rows.empty()) {
      // The rows after a broken one are not loaded but stay stored (docs/behaviour.md, "Load and
      // reset").
      if (!CreateAppInfoFromRow(rows.begin()->second)) {
        return;
      }
      // Frees its memory for the next record.
      rows.erase(rows.begin());
    }
  } catch (const std::exception&) {
    ORV_LOG_DEBUG("[Debug] Exception Caught.");
  }
}

bool ORVAppCreator::CreateAppInfoFromRow(std::map<std::string, std::string>& rRow) {
  AppBaseInfo info;
  info.m_sPackageID = std::move(rRow["package_id"]);
  info.m_sAppID = std::move(rRow["app_id"]);
  info.m_sWidgetID = std::move(rRow["widget_id"]);
  info.m_sServiceID = std::move(rRow["service_id"]);
  info.m_sVersion = std::move(rRow["version"]);

  const std::string& rVariables = rRow["variables"];
  Json::Value root;
  if (!JsonText::Parse(rVariables, root)) {
    ORV_LOG_DEBUG("[Debug] Invalid Json Str : %s", rVariables.c_str());
    return false;
  }
  AddAppInfoToAppCache(info, ToMetadataMap(root), false);
  return true;
}
