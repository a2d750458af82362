// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <package_manager.h>

#include <cstdlib>

#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/ORVAppCreator.h"

bool ORVAppCreator::ExtractAppInfoFromMetadata(AppBaseInfo& rInfo) {
  // An existing entry is kept: the table holds the first value of each key.
  m_mapMetadata.try_emplace(rInfo.m_sPackageID);
  if (GetPackageInfo(rInfo)) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] Get_PackageInfo() return false.");
  m_mapMetadata.erase(rInfo.m_sPackageID);
  return false;
}

bool ORVAppCreator::GetPackageInfo(AppBaseInfo& rInfo) {
  package_info_h hPackageInfo = nullptr;
  int ret = package_manager_get_package_info(rInfo.m_sPackageID.c_str(), &hPackageInfo);
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] package_manager_get_package_info() failed. [ret : %d]", ret);
    return false;
  }
  ret = package_info_foreach_app_from_package(hPackageInfo, PACKAGE_INFO_ALLAPP, PackageInfoAppCB,
                                              &rInfo);
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] package_info_foreach_app_from_package() failed. [ret : %d]", ret);
    package_info_destroy(hPackageInfo);
    return false;
  }
  char* pVersion = nullptr;
  ret = package_info_get_version(hPackageInfo, &pVersion);
  package_info_destroy(hPackageInfo);
  if (ret != 0 || pVersion == nullptr) {
    ORV_LOG_ERROR("[ERROR] package_info_get_version() failed. [ret : %d, version = %s]", ret,
                  pVersion != nullptr ? pVersion : "(null)");
    std::free(pVersion);
    return false;
  }
  ORV_LOG_DEBUG("[Debug] [Package Version = %s]", pVersion);
  rInfo.m_sVersion = pVersion;
  std::free(pVersion);
  return true;
}

bool ORVAppCreator::PackageInfoAppCB(package_info_app_component_type_e eType, const char* pAppID,
                                     void* pUserData) {
  if (pAppID == nullptr) {
    ORV_LOG_ERROR("[ERROR] An application of the package has no id.");
    return false;
  }
  try {
    SetComponentID(*static_cast<AppBaseInfo*>(pUserData), eType, pAppID);
  } catch (const std::exception& e) {
    ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  }
  app_info_h hAppInfo = nullptr;
  int ret = app_info_create(pAppID, &hAppInfo);
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] app_info_create() failed. [ret : %d]", ret);
    return false;
  }
  ret = app_info_foreach_metadata(hAppInfo, AppInfoMetadataCB, pUserData);
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] app_info_foreach_metadata() failed. [ret : %d]", ret);
  }
  app_info_destroy(hAppInfo);
  return true;
}

void ORVAppCreator::SetComponentID(AppBaseInfo& rInfo, package_info_app_component_type_e eType,
                                   const char* pAppID) {
  if (eType == PACKAGE_INFO_SERVICEAPP) {
    ORV_LOG_INFO("[Info] ServiceID : %s", pAppID);
    rInfo.m_sServiceID = pAppID;
  } else if (eType == PACKAGE_INFO_UIAPP) {
    ORV_LOG_INFO("[Info] AppID : %s", pAppID);
    rInfo.m_sAppID = pAppID;
  }
}

bool ORVAppCreator::AppInfoMetadataCB(const char* pKey, const char* pValue, void* pUserData) {
  const auto* pInfo = static_cast<const AppBaseInfo*>(pUserData);
  if (pKey == nullptr || pValue == nullptr) {
    ORV_LOG_ERROR("[ERROR] A metadata entry of %s has no key or no value.",
                  pInfo->m_sPackageID.c_str());
    return true;
  }
  try {
    GetInstance()->ParseMetadata(pInfo->m_sPackageID, pKey, pValue);
  } catch (const std::exception& e) {
    ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  }
  return true;
}

void ORVAppCreator::ParseMetadata(const std::string& rPackageID, const std::string& rKey,
                                  const std::string& rValue) {
  if (rKey.compare(0, METADATA_PREFIX.size(), METADATA_PREFIX) != 0) {
    ORV_LOG_DEBUG("[Debug] The metadata is not supported.[%s]", rKey.c_str());
    return;
  }
  const std::string sRest = rKey.substr(METADATA_PREFIX.size());
  const std::string* pType = nullptr;
  if (sRest.find(METADATA_ORV_TYPE) != std::string::npos) {
    pType = &METADATA_ORV_TYPE;
  } else if (sRest.find(METADATA_ORV_DATA) != std::string::npos) {
    pType = &METADATA_ORV_DATA;
  } else {
    ORV_LOG_DEBUG("[Debug] The metadata is not supported.[%s]", rKey.c_str());
    return;
  }
  // Cut at a fixed position, wherever the word was found and whatever the separator is. Throws
  // std::out_of_range when nothing follows the word (docs/behaviour.md, "Creation").
  const std::string sDataKey = sRest.substr(pType->size() + 1);
  ORV_LOG_INFO("[Info] packageID : %s, sDataKey : %s, sDataValue : %s", rPackageID.c_str(),
               sDataKey.c_str(), rValue.c_str());
  AddMetadata(rPackageID, *pType, sDataKey, rValue);
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
