// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "app_info/AppInfoCache.h"

void UnpinAppInfo::operator()(AppInfo* pAppInfo) const {
  AppInfoCache::GetInstance()->Unpin(pAppInfo);
}

PinnedAppInfo AppInfoCache::PinAppInfo(const std::string& rPackageID) {
  // Under the lock of the app list the record cannot leave the map before it is pinned.
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  return Pin(GetAppInfo(rPackageID));
}

PinnedAppInfo AppInfoCache::PinAppInfo(AppInfo* pAppInfo) {
  std::lock_guard<std::recursive_mutex> lock(m_mutexAppList);
  return Pin(HasAppInfo(pAppInfo) ? pAppInfo : nullptr);
}

PinnedAppInfo AppInfoCache::Pin(AppInfo* pAppInfo) {
  if (pAppInfo == nullptr) {
    return nullptr;
  }
  std::lock_guard<std::mutex> lock(m_mutexRecords);
  m_mapPins.emplace(pAppInfo, std::this_thread::get_id());
  return PinnedAppInfo(pAppInfo);
}

PinnedAppInfo AppInfoCache::PinNext(std::optional<std::string>& rPackageID) {
  std::lock_guard<std::mutex> lock(m_mutexRecords);
  const auto iter = rPackageID ? m_mapAppList.upper_bound(*rPackageID) : m_mapAppList.begin();
  if (iter == m_mapAppList.end()) {
    return nullptr;
  }
  rPackageID = iter->first;
  m_mapPins.emplace(iter->second, std::this_thread::get_id());
  return PinnedAppInfo(iter->second);
}

void AppInfoCache::Unpin(const AppInfo* pAppInfo) {
  {
    std::lock_guard<std::mutex> lock(m_mutexRecords);
    const auto [begin, end] = m_mapPins.equal_range(pAppInfo);
    m_mapPins.erase(std::find_if(
        begin, end, [](const auto& rPin) { return rPin.second == std::this_thread::get_id(); }));
  }
  m_condPins.notify_all();
}

void AppInfoCache::WaitUntilUnpinned(const AppInfo* pAppInfo) {
  std::unique_lock<std::mutex> lock(m_mutexRecords);
  m_condPins.wait(lock, [this, pAppInfo] {
    const auto [begin, end] = m_mapPins.equal_range(pAppInfo);
    return std::all_of(begin, end,
                       [](const auto& rPin) { return rPin.second == std::this_thread::get_id(); });
  });
}
