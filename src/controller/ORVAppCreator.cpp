// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVAppCreator.h"

#include <algorithm>

#include "app_info/AppInfoCache.h"
#include "app_info/ORVAppInfo.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/AppTypeRegistry.h"
#include "controller/ORVScheduler.h"
#include "controller/RecordGuard.h"
#include "controller/WidgetIDWait.h"
#include "utils/ResetCount.h"
#include "utils/WASUtils.h"

std::vector<std::string> ORVAppCreator::s_vSupportedAppTypes;

ORVAppCreator* ORVAppCreator::GetInstance() {
  return SingleInstance<ORVAppCreator>::Get();
}

ORVAppCreator::ORVAppCreator() {
  RegisterAppTypes(*this);
  AppInfoCache* pCache = AppInfoCache::GetInstance();
  if (FileSystemUtils::CheckTVResetAndUpdateResetCountInfo()) {
    ORV_LOG_DEBUG("[Debug] Factory Reset");
    pCache->ClearCacheAndDB();
  }
  pCache->OpenDB();
}

bool ORVAppCreator::IsSupportedAppType(const std::string& rType) {
  return std::find(s_vSupportedAppTypes.begin(), s_vSupportedAppTypes.end(), rType) !=
         s_vSupportedAppTypes.end();
}

void ORVAppCreator::AddSupportedAppType(const std::string& rType) {
  if (!IsSupportedAppType(rType)) {
    s_vSupportedAppTypes.push_back(rType);
  }
}

void ORVAppCreator::RegisterAppType(const std::string& rType, const AppTypeCreator& rCreator) {
  AddSupportedAppType(rType);
  m_mapAppTypeCreators[rType] = rCreator;
}

bool ORVAppCreator::CreateApp(const std::string& rPackageID) {
  ORV_LOG_INFO("[Info] rPackageID : %s", rPackageID.c_str());
  AppBaseInfo info;
  info.m_sPackageID = rPackageID;
  if (!ExtractAppInfoFromMetadata(info)) {
    ORV_LOG_DEBUG("[Debug] ExtractAppInfoFromMetadata() return false.");
    return false;
  }
  const auto iter = m_mapMetadata.find(rPackageID);
  if (iter == m_mapMetadata.end()) {
    ORV_LOG_DEBUG("[Debug] Cannot extract metadata for target app(PackageID : %s)",
                  rPackageID.c_str());
    return false;
  }
  if (iter->second.empty()) {
    ORV_LOG_DEBUG("[Debug] %s is not ORV Type.", rPackageID.c_str());
    return false;
  }
  info.m_sWidgetID = WASUtils::GetWidgetIDByAppID(info.m_sAppID);
  if (!AddAppInfoToAppCache(info, iter->second, true)) {
    ORV_LOG_ERROR("[ERROR] AddAppInfoToAppCache() return false.");
    m_mapMetadata.erase(iter);
    return false;
  }
  return true;
}

bool ORVAppCreator::AddAppInfoToAppCache(const AppBaseInfo& rInfo, const MetadataMap& rMetadata,
                                         bool bUpdateDB) {
  ORV_LOG_INFO("[Info] Target PackageID : %s", rInfo.m_sPackageID.c_str());
  AppInfo* pAppInfo = DecorateAppTypeByMatadata(rInfo, rMetadata);
  if (pAppInfo == nullptr) {
    ORV_LOG_ERROR("[ERROR] Cannot create app instance.");
    ORV_LOG_ERROR(
        "[ERROR] t_DecorateAppTypeByMatadata() return false. check the metadata definitions in "
        "config.xml file.(App ID : %s)",
        rInfo.m_sAppID.c_str());
    return false;
  }
  const auto iter = rMetadata.find(METADATA_ORV_DATA);
  if (iter != rMetadata.end()) {
    for (const auto& rKeyValue : iter->second) {
      ORV_LOG_INFO("[Info] [METADATA_ORV_DATA] key : %s, iter->second : %s",
                   rKeyValue.first.c_str(), rKeyValue.second.c_str());
      pAppInfo->SetMetadata(METADATA_ORV_DATA, rKeyValue, false);
    }
  }
  if (!AppInfoCache::GetInstance()->AddAppInfo(rInfo.m_sPackageID, pAppInfo, bUpdateDB)) {
    ORV_LOG_ERROR("[ERROR] AppInfoCache::AddAppInfo() return failed.");
    return false;
  }
  return true;
}

AppInfo* ORVAppCreator::DecorateAppTypeByMatadata(const AppBaseInfo& rInfo,
                                                  const MetadataMap& rMetadata) {
  AppInfo* pAppInfo = nullptr;
  const auto iter = rMetadata.find(METADATA_ORV_TYPE);
  if (iter == rMetadata.end()) {
    return pAppInfo;
  }
  for (const auto& [sType, sValue] : iter->second) {
    ORV_LOG_INFO("[Info] [METADATA_ORV_TYPE] key : %s, iter->second : %s", sType.c_str(),
                 sValue.c_str());
    if (!IsSupportedAppType(sType)) {
      continue;
    }
    // Owned by the first layer that wraps it.
    if (pAppInfo == nullptr) {
      pAppInfo = new ORVAppInfo(rInfo);
    }
    AddAppTypeDecorator(pAppInfo, sType, sValue);
  }
  return pAppInfo;
}

void ORVAppCreator::AddAppTypeDecorator(AppInfo*& rpAppInfo, const std::string& rType,
                                        const std::string& rValue) {
  const auto iter = m_mapAppTypeCreators.find(rType);
  if (iter == m_mapAppTypeCreators.end()) {
    ORV_LOG_INFO("[Info] Invalid AppType : %s", rType.c_str());
    return;
  }
  // A function pointer, because the layers do not include the scheduler.
  const RequestEventCallback pfnRequestEvent =
      rType == APP_TYPE_CH_FEEDER_CUSTOM ? &ORVScheduler::RequestEvent : nullptr;
  rpAppInfo = iter->second.first(rpAppInfo, rValue, pfnRequestEvent);
}

void ORVAppCreator::RemoveApp(const std::string& rPackageID) {
  ORV_LOG_INFO("[Info] rPackageID : %s", rPackageID.c_str());
  // Waits for an operation of the record on another thread.
  const RecordGuard guard(rPackageID);
  AppInfo* pAppInfo = AppInfoCache::GetInstance()->RemoveAppInfo(rPackageID);
  if (pAppInfo == nullptr) {
    return;
  }
  WidgetIDWait::End(pAppInfo);
  AppInfoCache::GetInstance()->WaitUntilUnpinned(pAppInfo);
  const auto iter = m_mapAppTypeCreators.find(pAppInfo->GetAppType());
  // A record whose outermost type is not registered is not destroyed (docs/behaviour.md,
  // "Creation").
  if (iter != m_mapAppTypeCreators.end()) {
    iter->second.second(pAppInfo);
  }
}

void ORVAppCreator::RunValidationTesting() {
  AppInfoCache* pCache = AppInfoCache::GetInstance();
  std::vector<std::string> packageIDs;
  pCache->GetAppIDList(packageIDs);
  WASAppList appList;
  if (!WASUtils::GetAllWASAppList(appList)) {
    ORV_LOG_DEBUG("[Debug] WASUtils::GetAllWASAppList() return false.");
    return;
  }
  for (const std::string& rPackageID : packageIDs) {
    ORV_LOG_INFO("[Info] packageID : %s", rPackageID.c_str());
    const auto iter = appList.find(rPackageID);
    if (iter != appList.end() && !iter->second) {
      continue;
    }
    ORV_LOG_INFO("[Info] Remove %s App.", rPackageID.c_str());
    RemoveApp(rPackageID);
  }
}
