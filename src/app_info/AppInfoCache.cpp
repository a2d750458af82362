// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/AppInfoCache.h"

#include <algorithm>

#include "common/Log.h"
#include "common/ORVConstants.h"

AppInfoCache* AppInfoCache::GetInstance() {
  return SingleInstance<AppInfoCache>::Get();
}

bool AppInfoCache::AddAppInfo(const std::string& rPackageID, AppInfo* pAppInfo, bool bUpdateDB) {
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  {
    std::lock_guard<std::mutex> lockRecords(m_mutexRecords);
    // A replaced record is not freed: it may be a layer of the new chain.
    m_mapAppList.insert_or_assign(rPackageID, pAppInfo);
  }
  if (!bUpdateDB) {
    return true;
  }
  if (m_AppInfoDB.InsertNewRecord(pAppInfo)) {
    return true;
  }
  return ReplaceRow(rPackageID, pAppInfo);
}

bool AppInfoCache::UpdateAppInfo(const std::string& rPackageID, AppInfo* pAppInfo) {
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  const auto iter = m_mapAppList.find(rPackageID);
  if (iter == m_mapAppList.end()) {
    return AddAppInfo(rPackageID, pAppInfo, true);
  }
  {
    std::lock_guard<std::mutex> lockRecords(m_mutexRecords);
    iter->second = pAppInfo;
  }
  if (m_AppInfoDB.UpdateRecord(pAppInfo)) {
    return true;
  }
  return ReplaceRow(rPackageID, pAppInfo);
}

bool AppInfoCache::ReplaceRow(const std::string& rPackageID, const AppInfo* pAppInfo) {
  m_AppInfoDB.DeleteRecord(rPackageID);
  if (m_AppInfoDB.InsertNewRecord(pAppInfo)) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] AppInfoDB::InsertNewRecord() return false.");
  return false;
}

AppInfo* AppInfoCache::RemoveAppInfo(const std::string& rPackageID) {
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  const auto iter = m_mapAppList.find(rPackageID);
  if (iter == m_mapAppList.end()) {
    ORV_LOG_ERROR("[ERROR] Cannot find target AppInfo.");
    return nullptr;
  }
  AppInfo* pAppInfo = iter->second;
  {
    std::lock_guard<std::mutex> lockRecords(m_mutexRecords);
    m_mapAppList.erase(iter);
  }
  if (!m_AppInfoDB.DeleteRecord(rPackageID)) {
    ORV_LOG_ERROR("[ERROR] AppInfoDB::DeleteRecord() return false.");
  }
  return pAppInfo;
}

AppInfo* AppInfoCache::GetAppInfo(const std::string& rPackageID) {
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  const auto iter = m_mapAppList.find(rPackageID);
  if (iter == m_mapAppList.end()) {
    ORV_LOG_DEBUG("[Debug] Cannot find target AppInfo.");
    return nullptr;
  }
  return iter->second;
}

bool AppInfoCache::HasAppInfo(const AppInfo* pAppInfo) {
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  return std::any_of(m_mapAppList.begin(), m_mapAppList.end(),
                     [pAppInfo](const auto& rEntry) { return rEntry.second == pAppInfo; });
}

void AppInfoCache::GetAppIDList(std::vector<std::string>& rList) const {
  std::lock_guard<std::mutex> lock(m_mutexRecords);
  rList.reserve(rList.size() + m_mapAppList.size());
  for (const auto& rEntry : m_mapAppList) {
    rList.push_back(rEntry.first);
  }
}

void AppInfoCache::GetAppIDListByType(const std::string& rAppType,
                                      std::vector<std::string>& rList) {
  std::optional<std::string> sPackageID;
  while (const PinnedAppInfo pAppInfo = PinNext(sPackageID)) {
    if (!pAppInfo->GetMetadata(METADATA_ORV_TYPE, rAppType).empty()) {
      rList.push_back(*sPackageID);
    }
  }
}

void AppInfoCache::GetPreloadingApps(std::vector<PreloadingApp>& rList) {
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  for (const auto& [sPackageID, pAppInfo] : m_mapAppList) {
    ORV_LOG_DEBUG("[Debug] appid : %s, widgetid : %s", pAppInfo->m_sAppID.c_str(),
                  pAppInfo->m_sWidgetID.c_str());
    if (pAppInfo->GetMetadata(METADATA_ORV_TYPE, APP_TYPE_CUSTOM_UI_STANDARD).empty() &&
        pAppInfo->GetMetadata(METADATA_ORV_TYPE, APP_TYPE_CUSTOM_UI_EXTENDED).empty()) {
      continue;
    }
    rList.emplace_back(pAppInfo->m_sAppID, pAppInfo->m_sWidgetID);
  }
}

void AppInfoCache::ClearCacheAndDB() {
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  {
    std::lock_guard<std::mutex> lockRecords(m_mutexRecords);
    m_mapAppList.clear();
  }
  // Under the app list's lock alone: nothing schedules before the records exist.
  m_vSchedulingList.clear();
  m_AppInfoDB.RemoveDBFile();
}

void AppInfoCache::OpenDB() {
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  m_AppInfoDB.OpenDB();
}

bool AppInfoCache::LoadData(AppInfoDB::RowMap& rRows) {
  return m_AppInfoDB.LoadData(rRows);
}
