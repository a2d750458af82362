// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/MetadataReader.h"

#include <package_manager.h>

#include <cstdlib>
#include <exception>

#include "common/Log.h"
#include "common/ORVConstants.h"

namespace {

void SetComponentID(AppBaseInfo& rInfo, package_info_app_component_type_e eType,
                    const char* pAppID) {
  if (eType == PACKAGE_INFO_SERVICEAPP) {
    ORV_LOG_INFO("[Info] ServiceID : %s", pAppID);
    rInfo.m_sServiceID = pAppID;
  } else if (eType == PACKAGE_INFO_UIAPP) {
    ORV_LOG_INFO("[Info] AppID : %s", pAppID);
    rInfo.m_sAppID = pAppID;
  }
}

}  // namespace

namespace MetadataReader {

bool GetPackageInfo(AppBaseInfo& rInfo, package_info_app_cb pfnAppCB) {
  package_info_h hPackageInfo = nullptr;
  int ret = package_manager_get_package_info(rInfo.m_sPackageID.c_str(), &hPackageInfo);
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] package_manager_get_package_info() failed. [ret : %d]", ret);
    return false;
  }
  ret = package_info_foreach_app_from_package(hPackageInfo, PACKAGE_INFO_ALLAPP, pfnAppCB, &rInfo);
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

bool ReadApplication(AppBaseInfo& rInfo, package_info_app_component_type_e eType,
                     const char* pAppID, app_info_metadata_cb pfnMetadataCB) {
  if (pAppID == nullptr) {
    ORV_LOG_ERROR("[ERROR] An application of the package has no id.");
    return false;
  }
  try {
    SetComponentID(rInfo, eType, pAppID);
  } catch (const std::exception& e) {
    ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  }
  app_info_h hAppInfo = nullptr;
  int ret = app_info_create(pAppID, &hAppInfo);
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] app_info_create() failed. [ret : %d]", ret);
    return false;
  }
  ret = app_info_foreach_metadata(hAppInfo, pfnMetadataCB, &rInfo);
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] app_info_foreach_metadata() failed. [ret : %d]", ret);
  }
  app_info_destroy(hAppInfo);
  return true;
}

std::optional<Key> ParseKey(const std::string& rKey) {
  if (rKey.compare(0, METADATA_PREFIX.size(), METADATA_PREFIX) != 0) {
    ORV_LOG_DEBUG("[Debug] The metadata is not supported.[%s]", rKey.c_str());
    return std::nullopt;
  }
  const std::string sRest = rKey.substr(METADATA_PREFIX.size());
  const std::string* pCategory = nullptr;
  if (sRest.find(METADATA_ORV_TYPE) != std::string::npos) {
    pCategory = &METADATA_ORV_TYPE;
  } else if (sRest.find(METADATA_ORV_DATA) != std::string::npos) {
    pCategory = &METADATA_ORV_DATA;
  } else {
    ORV_LOG_DEBUG("[Debug] The metadata is not supported.[%s]", rKey.c_str());
    return std::nullopt;
  }
  // Cut at a fixed position, wherever the word was found and whatever the separator is.
  return Key{pCategory, sRest.substr(pCategory->size() + 1)};
}

}  // namespace MetadataReader
