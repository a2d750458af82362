// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/WidgetIDWait.h"

#include <exception>
#include <mutex>
#include <stdexcept>
#include <string>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/RecordGuard.h"

namespace {

struct Wait {
  std::mutex mutex;  // leaf: guards both members
  const AppInfo* pAppInfo = nullptr;
  std::string sPackageID;
};

Wait& GetWait() {
  // Owned by the process and never deleted: callbacks may come while statics are destroyed.
  static Wait& s_rWait = *new Wait();
  return s_rWait;
}

void SetWait(const AppInfo* pAppInfo) {
  Wait& rWait = GetWait();
  const std::lock_guard<std::mutex> lock(rWait.mutex);
  rWait.pAppInfo = pAppInfo;
  rWait.sPackageID = pAppInfo->m_sPackageID;
}

/// False when the record does not wait. Otherwise rPackageID is the id of its package.
bool GetWaitingPackage(const AppInfo* pAppInfo, std::string& rPackageID) {
  Wait& rWait = GetWait();
  const std::lock_guard<std::mutex> lock(rWait.mutex);
  if (rWait.pAppInfo != pAppInfo) {
    return false;
  }
  rPackageID = rWait.sPackageID;
  return true;
}

/// True when the record waited until now.
bool TakeWait(const AppInfo* pAppInfo) {
  Wait& rWait = GetWait();
  const std::lock_guard<std::mutex> lock(rWait.mutex);
  if (rWait.pAppInfo != pAppInfo) {
    return false;
  }
  rWait.pAppInfo = nullptr;
  return true;
}

/// False when another record has taken the place of this one in the cache.
bool StoreWidgetID(AppInfo* pAppInfo, const std::string& rWidgetID) {
  AppInfoCache* pCache = AppInfoCache::GetInstance();
  const auto lock = pCache->LockAppList();
  if (!pCache->HasAppInfo(pAppInfo)) {
    return false;
  }
  pAppInfo->m_sWidgetID = rWidgetID;
  pCache->UpdateAppInfo(pAppInfo->m_sPackageID, pAppInfo);
  return true;
}

/// Does nothing when the record does not wait any more: it may have been destroyed. An exception
/// ends here: the wait has ended, and the callback must give up its subscription.
void SetWidgetIDAndRun(AppInfo* pAppInfo, const std::string& rWidgetID) try {
  std::string sPackageID;
  if (!GetWaitingPackage(pAppInfo, sPackageID)) {
    return;
  }
  const RecordGuard guard(sPackageID);
  // Asked again: the record may have been removed while this thread waited for the guard.
  if (TakeWait(pAppInfo) && StoreWidgetID(pAppInfo, rWidgetID)) {
    pAppInfo->RunOperation(false);
  }
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

}  // namespace

namespace WidgetIDWait {

void Begin(AppInfo* pAppInfo) {
  const char* pKey = VCONFKEY_WAS_APP_INSTALL.c_str();
  // Drops the wait of an earlier record.
  vconf_ignore_key_changed(pKey, AppInstalledCallback);
  SetWait(pAppInfo);
  const int ret = vconf_notify_key_changed(pKey, AppInstalledCallback, pAppInfo);
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] vconf_notify_key_changed, ret = %d", ret);
  }
}

void End(const AppInfo* pAppInfo) {
  TakeWait(pAppInfo);
}

}  // namespace WidgetIDWait

void AppInstalledCallback(keynode_t* keynode, void* user_data) try {
  const char* pWidgetID = vconf_keynode_get_str(keynode);
  if (pWidgetID == nullptr) {
    throw std::invalid_argument("the key holds no widget id");  // the wait goes on
  }
  ORV_LOG_DEBUG("[Debug] sWidgetID = %s", pWidgetID);
  SetWidgetIDAndRun(static_cast<AppInfo*>(user_data), pWidgetID);
  vconf_ignore_key_changed(VCONFKEY_WAS_APP_INSTALL.c_str(), AppInstalledCallback);
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}
