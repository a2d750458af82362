// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVAppOperator.h"

#include <atomic>
#include <exception>
#include <stdexcept>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "utils/WASUtils.h"

namespace {

void WaitForWidgetID(AppInfo* pAppInfo) {
  const char* pKey = VCONFKEY_WAS_APP_INSTALL.c_str();
  // Drops the wait of an earlier record, which is then never run by this path. That is settled.
  vconf_ignore_key_changed(pKey, AppInstalledCallback);
  const int ret = vconf_notify_key_changed(pKey, AppInstalledCallback, pAppInfo);
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] vconf_notify_key_changed, ret = %d", ret);
  }
}

void RunOneApp(const std::string& rPackageID) try {
  AppInfo* pAppInfo = AppInfoCache::GetInstance()->GetAppInfo(rPackageID);
  if (pAppInfo != nullptr) {
    pAppInfo->RunOperation(true);
  }
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

void StopOneApp(const std::string& rPackageID) try {
  AppInfo* pAppInfo = AppInfoCache::GetInstance()->GetAppInfo(rPackageID);
  if (pAppInfo != nullptr) {
    pAppInfo->StopOperation();
  }
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

/// An exception ends here: the record has its widget id, and its wait must end as well, or the id
/// of another app would be taken for its own.
void SetWidgetIDAndRun(AppInfo* pAppInfo, const std::string& rWidgetID) try {
  pAppInfo->m_sWidgetID = rWidgetID;
  AppInfoCache::GetInstance()->UpdateAppInfo(pAppInfo->m_sPackageID, pAppInfo);
  pAppInfo->RunOperation(false);
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

}  // namespace

ORVAppOperator* ORVAppOperator::GetInstance() {
  static std::atomic<ORVAppOperator*> s_pInstance{nullptr};
  if (s_pInstance == nullptr) {
    s_pInstance = new ORVAppOperator();  // owned by the process, never deleted
  }
  return s_pInstance;
}

void ORVAppOperator::DoOperation(const std::string& rPackageID, OperationType eType) {
  ORV_LOG_INFO("[Info] rPackageID : %s, eType : %d", rPackageID.c_str(), eType);
  AppInfo* pAppInfo = AppInfoCache::GetInstance()->GetAppInfo(rPackageID);
  if (pAppInfo == nullptr) {
    ORV_LOG_DEBUG("[Debug] Cannot find target App(rPackageID : %s)", rPackageID.c_str());
    return;
  }
  if (eType == OPERATION_TYPE_RUN && pAppInfo->m_sWidgetID.empty()) {
    WaitForWidgetID(pAppInfo);
    return;
  }
  switch (eType) {
    case OPERATION_TYPE_UPDATE:
      pAppInfo->UpdateOperation();
      return;
    case OPERATION_TYPE_STOP:
      pAppInfo->StopOperation();
      return;
    default:
      pAppInfo->RunOperation(false);
  }
}

void ORVAppOperator::RunAllApps(std::vector<std::string>& rPackageIDs) {
  AppInfoCache::GetInstance()->GetAppIDList(rPackageIDs);
  for (const std::string& rPackageID : rPackageIDs) {
    RunOneApp(rPackageID);
  }
}

void ORVAppOperator::RunInstalledApps() {
  std::vector<std::string> vPackageIDs;
  AppInfoCache::GetInstance()->GetAppIDList(vPackageIDs);
  // RunAllApps appends the same ids once more: each record runs twice. That is settled.
  RunAllApps(vPackageIDs);
}

void ORVAppOperator::RunValidationTesting() {
  WASAppList mapApps;
  if (!WASUtils::GetAllWASAppList(mapApps)) {
    ORV_LOG_DEBUG("[Debug] WASUtils::GetAllWASAppList() return false.");
    return;
  }
  for (const auto& [rPackageID, bGone] : mapApps) {
    if (bGone) {
      StopOneApp(rPackageID);
    }
  }
}

void AppInstalledCallback(keynode_t* keynode, void* user_data) try {
  const char* pWidgetID = vconf_keynode_get_str(keynode);
  if (pWidgetID == nullptr) {
    throw std::invalid_argument("the key holds no widget id");  // the wait goes on
  }
  ORV_LOG_DEBUG("[Debug] sWidgetID = %s", pWidgetID);
  auto* pAppInfo = static_cast<AppInfo*>(user_data);
  // The record may have been destroyed while it waited.
  if (AppInfoCache::GetInstance()->HasAppInfo(pAppInfo)) {
    SetWidgetIDAndRun(pAppInfo, pWidgetID);
  }
  vconf_ignore_key_changed(VCONFKEY_WAS_APP_INSTALL.c_str(), AppInstalledCallback);
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}
