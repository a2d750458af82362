// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <mutex>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"

void AppInfoCache::AddSchedulingItem(const std::string& rPackageID) {
  ORV_LOG_INFO("[Info] rPackageID : %s", rPackageID.c_str());
  // Without ever waiting for one while holding the other, see the header.
  std::scoped_lock lock(m_mutexAppList, m_mutexSchedulingList);
  if (m_mapAppList.find(rPackageID) == m_mapAppList.end()) {
    ORV_LOG_DEBUG("[Debug] Cannot find the target PackageID in m_mapAppList : %s",
                  rPackageID.c_str());
    return;
  }
  const auto iter = std::find(m_vSchedulingList.begin(), m_vSchedulingList.end(), rPackageID);
  if (iter != m_vSchedulingList.end()) {
    m_vSchedulingList.erase(iter);
  }
  m_vSchedulingList.insert(m_vSchedulingList.begin(), rPackageID);
}

void AppInfoCache::RemoveSchedulingItem(const std::string& rPackageID) {
  ORV_LOG_INFO("[Info] rPackageID : %s", rPackageID.c_str());
  std::lock_guard<std::recursive_mutex> lock(m_mutexSchedulingList);
  const auto iter = std::find(m_vSchedulingList.begin(), m_vSchedulingList.end(), rPackageID);
  if (iter == m_vSchedulingList.end()) {
    ORV_LOG_DEBUG("[Debug] Cannot find the target PackageID in m_vSchedulingList : %s",
                  rPackageID.c_str());
    return;
  }
  m_vSchedulingList.erase(iter);
}

bool AppInfoCache::GetNextSchedulingItem(SchedulingItem& rItem) {
  std::lock_guard<std::recursive_mutex> lock(m_mutexSchedulingList);
  ORV_LOG_INFO("[Info] m_vSchedulingList.size() : %d", static_cast<int>(m_vSchedulingList.size()));
  while (!m_vSchedulingList.empty()) {
    const std::string sPackageID = m_vSchedulingList.front();
    m_vSchedulingList.erase(m_vSchedulingList.begin());
    if (CopySchedulingItem(sPackageID, rItem)) {
      return true;
    }
  }
  return false;
}

bool AppInfoCache::CopySchedulingItem(const std::string& rPackageID, SchedulingItem& rItem) {
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  const auto iter = m_mapAppList.find(rPackageID);
  if (iter == m_mapAppList.end()) {
    return false;
  }
  const AppInfo* pAppInfo = iter->second;
  rItem.package_id = pAppInfo->m_sPackageID;
  rItem.service_id = pAppInfo->m_sServiceID;
  rItem.expiration_date = pAppInfo->GetMetadata(METADATA_ORV_DATA, DATA_KEY_EXPIRATION_DATE);
  return true;
}

bool AppInfoCache::UpdateSchedulingItem(const SchedulingItem& rItem) {
  // Across all steps: a record that is removed in between would come back into the map and the row.
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  AppInfo* pAppInfo = GetAppInfo(rItem.package_id);
  if (pAppInfo == nullptr) {
    ORV_LOG_DEBUG("[Debug] Cannot find TargetApp[PackageID : %s]", rItem.package_id.c_str());
    return false;
  }
  pAppInfo->SetMetadata(METADATA_ORV_DATA, {DATA_KEY_EXPIRATION_DATE, rItem.expiration_date},
                        false);
  return UpdateAppInfo(pAppInfo->m_sPackageID, pAppInfo);
}

int AppInfoCache::ResetSchedulingList() {
  std::lock_guard<std::recursive_mutex> lockSchedulingList(m_mutexSchedulingList);
  std::lock_guard<std::recursive_mutex> lockAppList(m_mutexAppList);
  m_vSchedulingList.clear();
  for (const auto& [sPackageID, pAppInfo] : m_mapAppList) {
    const std::string sValue = pAppInfo->GetMetadata(METADATA_ORV_TYPE, APP_TYPE_CH_FEEDER_CUSTOM);
    ORV_LOG_DEBUG("[Debug] value : %s", sValue.c_str());
    if (!sValue.empty()) {
      m_vSchedulingList.push_back(sPackageID);
    }
  }
  return static_cast<int>(m_vSchedulingList.size());
}

int AppInfoCache::GetSchedulingListSize() {
  std::lock_guard<std::recursive_mutex> lock(m_mutexSchedulingList);
  return static_cast<int>(m_vSchedulingList.size());
}

void AppInfoCache::ClearSchedulingList() {
  std::lock_guard<std::recursive_mutex> lock(m_mutexSchedulingList);
  m_vSchedulingList.clear();
}
