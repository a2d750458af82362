// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/CustomUIExtended.h"

#include <app_control.h>

#include <chrono>
#include <exception>
#include <fstream>
#include <future>
#include <set>

#include "app_info/app_type/CustomUIAnnouncement.h"
#include "app_info/app_type/CustomUINames.h"
#include "common/JsonText.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "utils/AppControlUtils.h"
#include "utils/AppPreloadingUtils.h"

namespace {

constexpr std::chrono::seconds APP_STATUS_WAIT(20);

const char* const MEMBER_CUSTOM_APP = "CustomApp";
const char* const REPLACEMENT_UI_KEY_APP_ID = "appid";

// The layers that exist. The status callback of a layer can outlive it: a stop with the option
// "background_img" leaves it registered, and so does an update that removes the type. The lock is
// held while a layer is read, so that it is not destroyed meanwhile; m_mutexMetadata nests in it.
std::mutex s_mutexLayers;
std::set<const void*> s_setLayers;

/// Without any white space, inside texts too. Intentional: docs/behaviour.md, "Without "appid" the
/// work continues". Empty when the file does not exist.
std::string ReadReplacementFile() {
  std::ifstream file(REPLACEMENT_UI_FILE);
  std::string sText;
  for (char cNext; file >> cNext;) {
    sText += cNext;
  }
  return sText;
}

}  // namespace

std::condition_variable CustomUIExtended::s_condAppStatus;
std::mutex CustomUIExtended::s_mutexAppStatus;
std::atomic<bool> CustomUIExtended::s_bWaitingForApp{false};

const std::map<std::string, CustomUIExtended::SupportedAppType> CustomUIExtended::s_mapAppTypes = {
    {CUSTOM_APP_CHANNEL_LIST, SUPPORTED_APP_TYPE_CHANNEL_LIST},
    {CUSTOM_APP_EPG, SUPPORTED_APP_TYPE_EPG}};

const std::map<CustomUIExtended::SupportedAppType, std::string> CustomUIExtended::s_mapOperations =
    {{SUPPORTED_APP_TYPE_CHANNEL_LIST, OPERATION_CHANNEL_LIST},
     {SUPPORTED_APP_TYPE_EPG, OPERATION_EPG}};

CustomUIExtended::CustomUIExtended(AppInfo* pAppInfo, const std::string& rMetadataValue)
    : AppTypeLayer(pAppInfo, APP_TYPE_CUSTOM_UI_EXTENDED, rMetadataValue) {
  // In force only: the option can be staged once an update has created its staged key.
  m_mapAppliedData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT];
  const std::lock_guard<std::mutex> lock(s_mutexLayers);
  s_setLayers.insert(this);
}

CustomUIExtended::~CustomUIExtended() {
  const std::lock_guard<std::mutex> lock(s_mutexLayers);
  s_setLayers.erase(this);
}

void CustomUIExtended::RunOperation(bool bStarted) {
  AppTypeDecorator::RunOperation(bStarted);
  if (!bStarted && !WriteAppInfoVconfKey(false)) {
    ORV_LOG_DEBUG("[Debug] WriteAppInfoVconfKey() return false.");
    return;
  }
  SetOperation(GetAppliedAppTypes(), true);
}

void CustomUIExtended::UpdateOperation() {
  ORV_LOG_DEBUG("[Debug] Applied Metadata : %s, Updatable Metadata : %s", GetValue(false).c_str(),
                GetValue(true).c_str());
  AppTypeDecorator::UpdateOperation();
  if (GetValue(true).empty() || !IsUpdateNeeded()) {
    return;
  }
  SetOperation(GetAppliedAppTypes(), false);
  {
    const std::lock_guard<std::mutex> lock(m_mutexMetadata);
    m_AppliedAppType.second = m_UpdatableAppType.second;
    // Creates a missing staged key, so a first update wipes the option. Intentional:
    // docs/behaviour.md, "The first update that reaches the option clears it".
    m_mapAppliedData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT] =
        m_mapUpdatableData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT];
  }
  SetOperation(GetAppliedAppTypes(), true);
  // The settings key keeps the option of the last run, and the staged option stays staged.
  ClearUpdatableValue();
}

bool CustomUIExtended::IsUpdateNeeded() {
  const std::lock_guard<std::mutex> lock(m_mutexMetadata);
  return m_AppliedAppType.second != m_UpdatableAppType.second ||
         m_mapAppliedData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT] !=
             m_mapUpdatableData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT];
}

void CustomUIExtended::StopOperation() {
  ORV_LOG_INFO("[Info] In");
  AppTypeDecorator::StopOperation();
  SetOperation(GetAppliedAppTypes(), false);
  WriteAppInfoVconfKey(true);
}

void CustomUIExtended::GetEnabledAppTypes(const std::string& rMetadataValue,
                                          std::vector<SupportedAppType>& rTypes) {
  ORV_LOG_INFO("[Info] rMetadataValue : %s", rMetadataValue.c_str());
  CustomUINames::AppendKnownNames(rMetadataValue, s_mapAppTypes, rTypes);
}

bool CustomUIExtended::WriteAppInfoVconfKey(bool bClear) {
  return CustomUIAnnouncement::WriteAppInfoVconfKey(
      MEMBER_CUSTOM_APP,
      CustomUIAnnouncement::MakeAppInfo(m_sPackageID, m_sAppID, m_sWidgetID, GetData(false)),
      bClear);
}

void CustomUIExtended::SetOperationByAppType(const std::vector<SupportedAppType>& rTypes,
                                             const std::string& rAppID, bool bEnable) {
  for (const SupportedAppType eType : rTypes) {
    if (AppControlUtils::SetCurrentAppOfAppOperation(s_mapOperations.at(eType), rAppID, bEnable)) {
      continue;
    }
    ORV_LOG_ERROR(
        "[ERROR] AppControlUtils::SetCurrentAppOfAppOperation() return false.(eType : %d, bEnable "
        ": "
        "%d)",
        eType, bEnable);
  }
}

void CustomUIExtended::SetOperation(const std::vector<SupportedAppType>& rTypes, bool bEnable) {
  // GetMetadata() would ask the inner layers for a missing key.
  const DataMap mapData = GetData(false);
  const auto it = mapData.find(DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT);
  if (it != mapData.end() && it->second == CUSTOM_UI_BACKGROUND_IMG) {
    // Also when the operations are to be given back. Intentional: docs/behaviour.md, "With
    // "background_img" a stop takes the operations over".
    RunSetOperationAsynchronously(rTypes, m_sAppID, this);
    return;
  }
  SetOperationByAppType(rTypes, m_sAppID, bEnable);
  if (!bEnable) {
    AppPreloadingUtils::RemoveWebStatusChangedCallback(m_sAppID, APP_TYPE_CUSTOM_UI_EXTENDED);
    return;
  }
  if (!AppPreloadingUtils::PreloadAppAndRegisterAppStatusChangedCB(
          m_sAppID, APP_TYPE_CUSTOM_UI_EXTENDED, {&OnAppStatusChanged, this})) {
    AppControlUtils::LaunchApp(m_sAppID, OPERATION_DEFAULT);
  }
}

void CustomUIExtended::OnAppStatusChanged(int eStatus, void* pUserData) {
  switch (eStatus) {
    case AppPreloadingUtils::WEB_APP_STATUS_PRELOAD:
    case AppPreloadingUtils::WEB_APP_STATUS_RESUME:
    case AppPreloadingUtils::WEB_APP_STATUS_PAUSE:
      WakeWaiter();
      return;
    case AppPreloadingUtils::WEB_APP_STATUS_QUIT:
      WakeWaiter();
      return Rearm(pUserData);
    default:
      return;
  }
}

std::vector<CustomUIExtended::SupportedAppType> CustomUIExtended::GetAppliedAppTypes() const {
  std::vector<SupportedAppType> vTypes;
  GetEnabledAppTypes(GetValue(false), vTypes);
  return vTypes;
}

void CustomUIExtended::RunSetOperationAsynchronously(const std::vector<SupportedAppType>& rTypes,
                                                     const std::string& rAppID, void* pUserData) {
  // The destructor of the future joins the worker, so the caller waits here and the layer outlives
  // the worker. When no thread can be started, the work is deferred and never done.
  const std::future<void> future =
      std::async(&SetOperationAsynchronously, rTypes, rAppID, pUserData);
}

void CustomUIExtended::Rearm(void* pUserData) {
  std::string sMetadataValue;
  std::string sAppID;
  {
    const std::lock_guard<std::mutex> lock(s_mutexLayers);
    if (s_setLayers.count(pUserData) == 0) {
      return;
    }
    const auto* const pThis = static_cast<const CustomUIExtended*>(pUserData);
    sMetadataValue = pThis->GetValue(false);
    sAppID = pThis->m_sAppID;
  }
  std::vector<SupportedAppType> vTypes;
  GetEnabledAppTypes(sMetadataValue, vTypes);
  RunSetOperationAsynchronously(vTypes, sAppID, pUserData);
}

void CustomUIExtended::WakeWaiter() {
  if (!s_bWaitingForApp) {
    return;
  }
  s_condAppStatus.notify_all();
  s_bWaitingForApp = false;
}

// NOLINTBEGIN(performance-unnecessary-value-param): the worker has copies of its own
void SetOperationAsynchronously(std::vector<CustomUIExtended::SupportedAppType> vTypes,
                                std::string sAppID, void* pUserData) {
  // NOLINTEND(performance-unnecessary-value-param)
  std::string sLayoutAppID;
  try {
    Json::Value root;
    if (!JsonText::Parse(ReadReplacementFile(), root)) {
      ORV_LOG_ERROR("[ERROR] Invalid Json String.");
      return;
    }
    sLayoutAppID = root[REPLACEMENT_UI_KEY_APP_ID].asString();
  } catch (const std::exception&) {
    ORV_LOG_ERROR("[ERROR] Exception Caught");
    return;
  }
  ORV_LOG_DEBUG("[Debug] sLayoutAppID : %s", sLayoutAppID.c_str());
  std::unique_lock<std::mutex> lock(CustomUIExtended::s_mutexAppStatus);
  CustomUIExtended::SetOperationByAppType(vTypes, sLayoutAppID, true);
  if (AppPreloadingUtils::PreloadAppAndRegisterAppStatusChangedCB(
          sAppID, APP_TYPE_CUSTOM_UI_EXTENDED,
          {&CustomUIExtended::OnAppStatusChanged, pUserData})) {
    CustomUIExtended::s_bWaitingForApp = true;
    // Once and without a predicate: any wake-up ends it, and a timeout leaves the flag set.
    CustomUIExtended::s_condAppStatus.wait_for(lock, APP_STATUS_WAIT);
    lock.unlock();
  }
  // Without a wait the mutex is still held here.
  CustomUIExtended::SetOperationByAppType(vTypes, sAppID, true);
}
