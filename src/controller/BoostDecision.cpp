// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/BoostDecision.h"

#include <TVServiceAPI.h>
#include <app_common.h>
#include <vconf.h>

#include <algorithm>
#include <boost/filesystem.hpp>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>
#include <string>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "utils/AppControlUtils.h"

namespace {

constexpr int FIELD_SERVICE_ID = 12;
constexpr int FIELD_PACKAGE_ID = 179;

std::string GetBoostFlagFile() {
  char* pDataPath = app_get_data_path();
  std::string sPath = pDataPath == nullptr ? "" : pDataPath;
  std::free(pDataPath);
  return sPath + BOOST_FLAG_FILE;
}

/// Readers see the whole flag or none. An exception of the rename passes to the caller. One call at
/// a time: two calls share the dummy file, and the rename of the second one would fail.
void CreateFlagFile(const std::string& rPath) {
  static std::mutex s_mutex;
  const std::lock_guard<std::mutex> lock(s_mutex);
  const std::string sDummy = rPath + "_dummy";
  std::ofstream(sDummy).close();  // the rename reports a failure
  boost::filesystem::rename(sDummy, rPath);
}

std::string GetVconfValue(const std::string& rKey) {
  char* pValue = vconf_get_str(rKey.c_str());
  if (pValue == nullptr) {
    ORV_LOG_INFO("[Info] key : %s is not valid", rKey.c_str());
    return {};
  }
  std::string sValue = pValue;
  std::free(pValue);
  return sValue;
}

/// False when the lookup failed. rPackageID stays empty when the service has no such field.
bool FindPackageIDOfService(std::uint64_t serviceID, std::string& rPackageID) {
  TCServiceData data;
  TCCriteriaHelper criteria;
  criteria.Where(FIELD_SERVICE_ID, serviceID);
  criteria.Fetch(FIELD_PACKAGE_ID);
  TCService* pService = nullptr;
  TVServiceAPI::CreateService(&pService);
  if (pService == nullptr) {
    ORV_LOG_ERROR("[ERROR] [Error] pService is null");
    return false;
  }
  if (pService->FindService(criteria, data, 1) < 1) {
    ORV_LOG_ERROR("[ERROR] [Error] FindService has failed");
    TVServiceAPI::Destroy(pService);
    return false;
  }
  TVServiceAPI::Destroy(pService);
  data.Get(FIELD_PACKAGE_ID, rPackageID);
  return true;
}

/// False when the navigation failed. rServiceID is unchanged when the service has no id.
bool GetCurrentServiceID(TCServiceNavigation& rNavigation, std::uint64_t& rServiceID) {
  TSTvMode mode;
  if (rNavigation.GetTVMode(mode) < 1) {
    ORV_LOG_ERROR("[ERROR] GetTVMode() failed");
    return false;
  }
  TCServiceData data;
  TCCriteriaHelper criteria;
  criteria.Fetch(FIELD_SERVICE_ID);
  if (rNavigation.GetCurrentServiceInfo(mode, criteria, data) < 1) {
    ORV_LOG_ERROR("[ERROR] GetCurrentServiceInfo() failed");
    return false;
  }
  data.Get(FIELD_SERVICE_ID, rServiceID);
  return true;
}

void LaunchFirstScreen() {
  AppControlUtils::LaunchApp(FIRST_SCREEN_APP_ID, OPERATION_DEFAULT);
}

}  // namespace

namespace BoostDecision {

bool IsBoostingApp(std::uint64_t serviceID) {
  std::string sPackageID;
  if (!FindPackageIDOfService(serviceID, sPackageID)) {
    return false;
  }
  // The field may contain NUL bytes at any position.
  sPackageID.erase(std::remove(sPackageID.begin(), sPackageID.end(), '\0'), sPackageID.end());
  if (sPackageID.empty()) {
    ORV_LOG_INFO("[Info] PACKAGE_ID is empty");
    return false;
  }
  // Under the lock, not the record's guard: a tune does not wait for an operation of the record.
  const auto lock = AppInfoCache::GetInstance()->LockAppList();
  AppInfo* pAppInfo = AppInfoCache::GetInstance()->GetAppInfo(sPackageID);
  if (pAppInfo == nullptr) {
    ORV_LOG_INFO("[Info] invalid app");
    return false;
  }
  const std::string sBoosting = pAppInfo->GetMetadata(METADATA_ORV_DATA, BOOST_METADATA_KEY);
  ORV_LOG_INFO("[Info] ch.app.boosting value is %s", sBoosting.c_str());
  return sBoosting == "true";
}

bool IsBoostingAppOnCurrentCh() {
  if (GetVconfValue(VCONFKEY_LAST_SERVICE) != VIRTUAL_SERVICE_NAME) {
    ORV_LOG_INFO("[Info] Not Virtual ch.");
    return false;
  }
  TCServiceNavigation* pServiceNavigation = nullptr;
  TVServiceAPI::CreateServiceNavigation(1, 0, &pServiceNavigation);
  if (pServiceNavigation == nullptr) {
    ORV_LOG_ERROR("[ERROR] pServiceNavigation is NULL.");
    return false;
  }
  std::uint64_t serviceID = UINT64_MAX;
  const bool bFound = GetCurrentServiceID(*pServiceNavigation, serviceID);
  TVServiceAPI::Destroy(pServiceNavigation);
  return bFound && IsBoostingApp(serviceID);
}

bool HasBoostFlag() {
  return boost::filesystem::exists(GetBoostFlagFile());
}

void RemoveBoostFlag() {
  ORV_LOG_INFO("[Info] non boosting hbbTV App");
  boost::filesystem::remove(GetBoostFlagFile());
}

void OnTune(const void* pSignalData) {
  ORV_LOG_INFO("[Info] SIGNAL_TUNE_TO_SERVICEID");
  if (pSignalData == nullptr) {
    ORV_LOG_ERROR("[ERROR] The tune signal has no service id.");
    RemoveBoostFlag();
    return;
  }
  std::uint64_t serviceID = 0;
  std::memcpy(&serviceID, pSignalData, sizeof(serviceID));
  if (!IsBoostingApp(serviceID)) {
    RemoveBoostFlag();
    return;
  }
  ORV_LOG_INFO("[Info] boosting hbbTV App");
  CreateFlagFile(GetBoostFlagFile());
}

bool DecideFirstScreen(bool bBoostFile, bool bBoostChApp) {
  if (bBoostChApp) {
    if (!bBoostFile) {
      CreateFlagFile(GetBoostFlagFile());
    }
    return false;  // the first screen is launched by the HbbTV status callback
  }
  if (bBoostFile) {
    CreateFlagFile(HBB_READY_FILE);
    boost::filesystem::remove(GetBoostFlagFile());
    LaunchFirstScreen();
  }
  return true;
}

void StartFirstScreen() {
  // Unlike DecideFirstScreen(), this does not remove the boost flag (docs/behaviour.md, "Boost").
  CreateFlagFile(HBB_READY_FILE);
  LaunchFirstScreen();
}

}  // namespace BoostDecision
