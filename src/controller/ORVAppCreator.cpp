// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVAppCreator.h"

#include <algorithm>
#include <exception>
#include <memory>

#include "app_info/AppInfoCache.h"
#include "app_info/ORVAppInfo.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/AppTypeUpdate.h"
#include "controller/MetadataReader.h"
#include "controller/ORVScheduler.h"
#include "controller/RecordGuard.h"
#include "controller/StoredRow.h"
#include "controller/WidgetIDWait.h"
#include "utils/ResetCount.h"
#include "utils/WASUtils.h"

namespace {

struct ChainDeleter {
  void operator()(AppInfo* pAppInfo) const { pAppInfo->GetReleaseFunction()(pAppInfo); }
};
/// Owns the outermost layer and with it the whole chain.
using ChainPtr = std::unique_ptr<AppInfo, ChainDeleter>;

}  // namespace

std::vector<std::string> ORVAppCreator::s_vSupportedAppTypes;

ORVAppCreator* ORVAppCreator::GetInstance() {
  return SingleInstance<ORVAppCreator>::Get();
}

ORVAppCreator::ORVAppCreator() {
  for (const auto& [sType, creator] : GetAppTypes()) {
    RegisterAppType(sType, creator);
  }
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

void ORVAppCreator::LoadAndCreateAppInfo() {
  AppInfoDB::RowMap rows;
  if (!AppInfoCache::GetInstance()->LoadData(rows)) {
    ORV_LOG_ERROR("[ERROR] Cannot load the stored data.");
    return;
  }
  try {
    while (!rows.empty()) {
      StoredRow row;
      // The rows after a broken one are not loaded but stay stored (docs/behaviour.md, "Load and
      // reset").
      if (!DecodeStoredRow(rows.begin()->second, row)) {
        return;
      }
      AddAppInfoToAppCache(row.info, row.metadata, false);
      // Frees its memory for the next record.
      rows.erase(rows.begin());
    }
  } catch (const std::exception&) {
    ORV_LOG_DEBUG("[Debug] Exception Caught.");
  }
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

bool ORVAppCreator::ExtractAppInfoFromMetadata(AppBaseInfo& rInfo) {
  // An existing entry is kept: the table holds the first value of each key.
  m_mapMetadata.try_emplace(rInfo.m_sPackageID);
  if (MetadataReader::GetPackageInfo(rInfo, PackageInfoAppCB)) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] Get_PackageInfo() return false.");
  m_mapMetadata.erase(rInfo.m_sPackageID);
  return false;
}

bool ORVAppCreator::PackageInfoAppCB(package_info_app_component_type_e eType, const char* pAppID,
                                     void* pUserData) {
  return MetadataReader::ReadApplication(*static_cast<AppBaseInfo*>(pUserData), eType, pAppID,
                                         AppInfoMetadataCB);
}

bool ORVAppCreator::AppInfoMetadataCB(const char* pKey, const char* pValue, void* pUserData) {
  const std::string& rPackageID = static_cast<const AppBaseInfo*>(pUserData)->m_sPackageID;
  if (pKey == nullptr || pValue == nullptr) {
    ORV_LOG_ERROR("[ERROR] A metadata entry of %s has no key or no value.", rPackageID.c_str());
    return true;
  }
  try {
    const auto key = MetadataReader::ParseKey(pKey);
    if (key) {
      ORV_LOG_INFO("[Info] packageID : %s, sDataKey : %s, sDataValue : %s", rPackageID.c_str(),
                   key->sName.c_str(), pValue);
      GetInstance()->AddMetadata(rPackageID, *key->pCategory, key->sName, pValue);
    }
  } catch (const std::exception& e) {
    ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  }
  return true;
}

void ORVAppCreator::AddMetadata(const std::string& rPackageID, const std::string& rType,
                                const std::string& rKey, const std::string& rValue) {
  const auto iter = m_mapMetadata.find(rPackageID);
  if (iter == m_mapMetadata.end()) {
    ORV_LOG_INFO("[Info] Invalid PackageID[%s]", rPackageID.c_str());
    return;
  }
  iter->second[rType].emplace(rKey, rValue);
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
  const auto iter = rMetadata.find(METADATA_ORV_TYPE);
  if (iter == rMetadata.end()) {
    return nullptr;
  }
  ChainPtr pChain;
  for (const auto& [sType, sValue] : iter->second) {
    ORV_LOG_INFO("[Info] [METADATA_ORV_TYPE] key : %s, iter->second : %s", sType.c_str(),
                 sValue.c_str());
    if (!IsSupportedAppType(sType)) {
      continue;
    }
    if (pChain == nullptr) {
      pChain.reset(new ORVAppInfo(rInfo));
    }
    AppInfo* pHead = pChain.get();
    AddAppTypeDecorator(pHead, sType, sValue);
    // The new layer owns what it wraps.
    static_cast<void>(pChain.release());
    pChain.reset(pHead);
  }
  return pChain.release();
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

UpdateResult ORVAppCreator::UpdateApp(const std::string& rPackageID) {
  ORV_LOG_INFO("[Info] rPackageID : %s", rPackageID.c_str());
  const RecordGuard guard(rPackageID);  // keeps other threads out while the chain changes
  AppInfo* pAppInfo = AppInfoCache::GetInstance()->GetAppInfo(rPackageID);
  if (pAppInfo == nullptr) {
    return UPDATE_RESULT_CREATE;
  }

  AppBaseInfo info;
  info.m_sPackageID = rPackageID;
  if (!ExtractAppInfoFromMetadata(info)) {
    ORV_LOG_DEBUG("[Debug] ExtractAppInfoFromMetadata() return false.");
    return UPDATE_RESULT_FAIL;
  }
  const auto newMetadata = m_mapMetadata.find(rPackageID);
  if (newMetadata == m_mapMetadata.end()) {
    ORV_LOG_DEBUG("[Debug] Cannot extract metadata for target app(PackageID : %s)",
                  rPackageID.c_str());
    return UPDATE_RESULT_REMOVE;
  }
  const auto newTypes = newMetadata->second.find(METADATA_ORV_TYPE);
  if (newTypes == newMetadata->second.end()) {
    return UPDATE_RESULT_REMOVE;
  }

  MetadataMap oldMetadata;
  pAppInfo->GetAllMetadata(oldMetadata);
  const auto oldTypes = oldMetadata.find(METADATA_ORV_TYPE);
  if (oldTypes == oldMetadata.end()) {
    RemoveApp(rPackageID);
    return UPDATE_RESULT_CREATE;
  }
  RemoveDeactivatedAppTypes(pAppInfo, oldTypes->second, newTypes->second);
  AddActivatedAppTypes(pAppInfo, oldTypes->second, newTypes->second);
  UpdateChangedMetadata(pAppInfo, oldTypes->second, newTypes->second);

  const auto newData = newMetadata->second.find(METADATA_ORV_DATA);
  if (newData != newMetadata->second.end()) {
    AppTypeUpdate::StageMetadata(pAppInfo, METADATA_ORV_DATA, newData->second);
  }
  return UPDATE_RESULT_UPDATE;
}

void ORVAppCreator::RemoveDeactivatedAppTypes(AppInfo*& rpAppInfo, const AppTypeMap& rOldTypes,
                                              const AppTypeMap& rNewTypes) {
  for (const auto& [sType, sValue] : AppTypeUpdate::Subtract(rOldTypes, rNewTypes)) {
    ORV_LOG_DEBUG("[Debug] [Removable] first : %s, second : %s", sType.c_str(), sValue.c_str());
    AppInfo* pExtracted = AppTypeUpdate::ExtractAppType(rpAppInfo, sType);
    if (pExtracted == nullptr) {
      continue;
    }
    WidgetIDWait::End(pExtracted);
    const auto iter = m_mapAppTypeCreators.find(sType);
    if (iter == m_mapAppTypeCreators.end()) {
      ORV_LOG_ERROR("[ERROR] Invalid AppTypeStr : %s", sType.c_str());
      // The layer is not destroyed, and further types stay attached (docs/behaviour.md, "Updates").
      break;
    }
    iter->second.second(pExtracted);
  }
}

void ORVAppCreator::AddActivatedAppTypes(AppInfo* pAppInfo, const AppTypeMap& rOldTypes,
                                         const AppTypeMap& rNewTypes) {
  // Unlike a removal, this passes the new head neither to the caller nor to the cache: both keep
  // the chain inside the new layers (docs/behaviour.md, "Updates").
  AppInfo* pHead = pAppInfo;
  for (const auto& rKeyValue : AppTypeUpdate::Subtract(rNewTypes, rOldTypes)) {
    ORV_LOG_DEBUG("[Debug] [Additional] first : %s, second : %s", rKeyValue.first.c_str(),
                  rKeyValue.second.c_str());
    if (!IsSupportedAppType(rKeyValue.first)) {
      continue;
    }
    AddAppTypeDecorator(pHead, rKeyValue.first, rKeyValue.second);
    pHead->SetMetadata(METADATA_ORV_TYPE, rKeyValue, true);
  }
}

void ORVAppCreator::UpdateChangedMetadata(AppInfo* pAppInfo, const AppTypeMap& rOldTypes,
                                          const AppTypeMap& rNewTypes) {
  // Unchanged values are staged too.
  AppTypeUpdate::StageMetadata(pAppInfo, METADATA_ORV_TYPE,
                               AppTypeUpdate::Intersect(rNewTypes, rOldTypes));
}

void ORVAppCreator::RemoveApp(const std::string& rPackageID) {
  ORV_LOG_INFO("[Info] rPackageID : %s", rPackageID.c_str());
  const RecordGuard guard(rPackageID);  // waits for an operation on another thread
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
