// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iterator>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/ORVAppCreator.h"
#include "controller/RecordGuard.h"
#include "controller/WidgetIDWait.h"

namespace {

using AppTypeDifference = std::map<std::string, std::string>;

bool IsKeyLess(const AppTypeDifference::value_type& rLeft,
               const AppTypeDifference::value_type& rRight) {
  return rLeft.first < rRight.first;
}

/// The entries whose keys are in rLeft only. A changed value is not a difference.
AppTypeDifference Subtract(const AppTypeDifference& rLeft, const AppTypeDifference& rRight) {
  AppTypeDifference difference;
  std::set_difference(rLeft.begin(), rLeft.end(), rRight.begin(), rRight.end(),
                      std::inserter(difference, difference.end()), IsKeyLess);
  return difference;
}

/// The entries whose keys are in both maps, with the values of rLeft.
AppTypeDifference Intersect(const AppTypeDifference& rLeft, const AppTypeDifference& rRight) {
  AppTypeDifference intersection;
  std::set_intersection(rLeft.begin(), rLeft.end(), rRight.begin(), rRight.end(),
                        std::inserter(intersection, intersection.end()), IsKeyLess);
  return intersection;
}

/// Takes a layer out of the record; null when the record has none of that type. When it was the
/// outermost layer, the cache gets the new one before the old one is destroyed.
AppInfo* ExtractAppType(AppInfo*& rpAppInfo, const std::string& rType) {
  // The walks under this lock use the record without its guard.
  const auto lock = AppInfoCache::GetInstance()->LockAppList();
  AppInfo* pInner = nullptr;
  AppInfo* pExtracted = rpAppInfo->ExtractTargetAppType(rType, &pInner);
  if (pExtracted != nullptr && pExtracted == rpAppInfo) {
    AppInfoCache::GetInstance()->UpdateAppInfo(rpAppInfo->m_sPackageID, pInner);
    rpAppInfo = pInner;
  }
  return pExtracted;
}

void StageMetadata(AppInfo* pAppInfo, const std::string& rType, const AppTypeDifference& rEntries) {
  for (const auto& rKeyValue : rEntries) {
    ORV_LOG_DEBUG("[Debug] [Intersection] first : %s, second : %s", rKeyValue.first.c_str(),
                  rKeyValue.second.c_str());
    pAppInfo->SetMetadata(rType, rKeyValue, true);
  }
}

}  // namespace

UpdateResult ORVAppCreator::UpdateApp(const std::string& rPackageID) {
  ORV_LOG_INFO("[Info] rPackageID : %s", rPackageID.c_str());
  // No other thread is inside the record while its chain changes.
  const RecordGuard guard(rPackageID);
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
    StageMetadata(pAppInfo, METADATA_ORV_DATA, newData->second);
  }
  return UPDATE_RESULT_UPDATE;
}

void ORVAppCreator::RemoveDeactivatedAppTypes(AppInfo*& rpAppInfo, const AppTypeMap& rOldTypes,
                                              const AppTypeMap& rNewTypes) {
  for (const auto& [sType, sValue] : Subtract(rOldTypes, rNewTypes)) {
    ORV_LOG_DEBUG("[Debug] [Removable] first : %s, second : %s", sType.c_str(), sValue.c_str());
    AppInfo* pExtracted = ExtractAppType(rpAppInfo, sType);
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
  for (const auto& rKeyValue : Subtract(rNewTypes, rOldTypes)) {
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
  StageMetadata(pAppInfo, METADATA_ORV_TYPE, Intersect(rNewTypes, rOldTypes));
}
