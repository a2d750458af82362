// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <json/json.h>

#include "app_info/AppInfoCache.h"
#include "common/JsonText.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/ORVAppCreator.h"

namespace {

MetadataMap ToMetadataMap(const Json::Value& rRoot) {
  MetadataMap metadata;
  for (const std::string& rType : rRoot.getMemberNames()) {
    const Json::Value& rEntries = rRoot[rType];
    for (const std::string& rKey : rEntries.getMemberNames()) {
      metadata[rType].emplace(rKey, rEntries[rKey].asString());
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
    for (auto& rEntry : rows) {
      // The rows behind a broken one are not loaded, but stay in the store. Settled behaviour.
      if (!CreateAppInfoFromRow(rEntry.second)) return;
    }
  } catch (const std::exception&) {
    ORV_LOG_DEBUG("[Debug] Exception Caught.");
  }
}

bool ORVAppCreator::CreateAppInfoFromRow(std::map<std::string, std::string>& rRow) {
  AppBaseInfo info;
  info.m_sPackageID = rRow["package_id"];
  info.m_sAppID = rRow["app_id"];
  info.m_sWidgetID = rRow["widget_id"];
  info.m_sServiceID = rRow["service_id"];
  info.m_sVersion = rRow["version"];

  const std::string& rVariables = rRow["variables"];
  Json::Value root;
  if (!JsonText::Parse(rVariables, root)) {
    ORV_LOG_DEBUG("[Debug] Invalid Json Str : %s", rVariables.c_str());
    return false;
  }
  AddAppInfoToAppCache(info, ToMetadataMap(root), false);
  return true;
}
