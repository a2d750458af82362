// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/ORVAppInfo.h"

#include "common/ORVConstants.h"

ORVAppInfo::ORVAppInfo(const AppBaseInfo& rInfo) {
  m_sPackageID = rInfo.m_sPackageID;
  m_sAppID = rInfo.m_sAppID;
  m_sWidgetID = rInfo.m_sWidgetID;
  m_sServiceID = rInfo.m_sServiceID;
  m_sVersion = rInfo.m_sVersion;
}

void ORVAppInfo::Release(AppInfo* pAppInfo) {
  delete static_cast<ORVAppInfo*>(pAppInfo);
}

void ORVAppInfo::SetMetadata(const std::string& rType,
                             const std::pair<std::string, std::string>& rKeyValue,
                             bool bUpdatable) {}

std::string ORVAppInfo::GetMetadata(const std::string& rType, const std::string& rKey) const {
  return std::string();
}

void ORVAppInfo::GetAllMetadata(MetadataMap& rMetadata) const {}

void ORVAppInfo::RemoveMetadata(const std::string& rFirst, const std::string& rSecond) {}

AppInfo* ORVAppInfo::ExtractTargetAppType(const std::string& rTargetType, AppInfo** ppNext) {
  return nullptr;
}

const std::string& ORVAppInfo::GetAppType() const {
  return APP_TYPE_ORV_APP;
}

AppInfo::ReleaseFunction ORVAppInfo::GetReleaseFunction() const {
  return &ORVAppInfo::Release;
}
