// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/AppTypeUpdate.h"

#include <algorithm>
#include <iterator>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"

namespace AppTypeUpdate {

namespace {

bool IsKeyLess(const AppTypeDifference::value_type& rLeft,
               const AppTypeDifference::value_type& rRight) {
  return rLeft.first < rRight.first;
}

}  // namespace

AppTypeDifference Subtract(const AppTypeDifference& rLeft, const AppTypeDifference& rRight) {
  AppTypeDifference difference;
  std::set_difference(rLeft.begin(), rLeft.end(), rRight.begin(), rRight.end(),
                      std::inserter(difference, difference.end()), IsKeyLess);
  return difference;
}

AppTypeDifference Intersect(const AppTypeDifference& rLeft, const AppTypeDifference& rRight) {
  AppTypeDifference intersection;
  std::set_intersection(rLeft.begin(), rLeft.end(), rRight.begin(), rRight.end(),
                        std::inserter(intersection, intersection.end()), IsKeyLess);
  return intersection;
}

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

}  // namespace AppTypeUpdate
