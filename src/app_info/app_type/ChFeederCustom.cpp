// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/ChFeederCustom.h"

#include <exception>

#include "app_info/app_type/ChFeederTypes.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "utils/PackagedData.h"

namespace {

// The scheduler's numbers; its header is out of this layer's sight.
constexpr int EVENT_ADD_ITEM = 1000;
constexpr int EVENT_DELETE_ITEM = 1001;

}  // namespace

ChFeederCustom::ChFeederCustom(AppInfo* pAppInfo, const std::string& rMetadataValue,
                               RequestEventCallback pfnRequestEvent)
    : AppTypeDecorator(pAppInfo, APP_TYPE_CH_FEEDER_CUSTOM, rMetadataValue),
      m_pfnRequestEvent(pfnRequestEvent) {
  // Applied only: a staged date is dropped.
  m_mapAppliedData[DATA_KEY_EXPIRATION_DATE];
}

AppInfo* ChFeederCustom::DecorateAppType(AppInfo* pAppInfo, const std::string& rMetadataValue,
                                         RequestEventCallback pfnRequestEvent) {
  ORV_LOG_INFO("[Info] rMetadataValue : %s", rMetadataValue.c_str());
  // Owned by the caller until Release().
  return new ChFeederCustom(pAppInfo, rMetadataValue, pfnRequestEvent);
}

void ChFeederCustom::Release(AppInfo* pAppInfo) {
  if (pAppInfo == nullptr) return;
  auto* const pThis = static_cast<ChFeederCustom*>(pAppInfo);
  pThis->CleanUp();
  delete pThis;
}

void ChFeederCustom::CleanUp() try {
  RequestEvent(EVENT_DELETE_ITEM);
  if (m_AppliedAppType.second != APP_TYPE_VALUE_EXTENDED) return;
  FileSystemUtils::UninstallPackagedData(m_sPackageID, APP_TYPE_CH_FEEDER_CUSTOM,
                                         PACKAGED_TYPE_HBBTV_APP);
} catch (const std::exception& e) {
  // The next layer outward releases this one in its destructor, which nothing may leave.
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

AppInfo::ReleaseFunction ChFeederCustom::GetReleaseFunction() const {
  return &Release;
}

void ChFeederCustom::RunOperation(bool bStarted) {
  AppTypeDecorator::RunOperation(bStarted);
  if (m_AppliedAppType.second == APP_TYPE_VALUE_EXTENDED &&
      !FileSystemUtils::InstallPackagedData(m_sPackageID, m_sWidgetID, APP_TYPE_CH_FEEDER_CUSTOM,
                                            PACKAGED_TYPE_HBBTV_APP, bStarted)) {
    ORV_LOG_ERROR("[ERROR] FileSystemUtils::InstallPackagedData() return false.");
  }
  RequestEvent(EVENT_ADD_ITEM);
}

void ChFeederCustom::UpdateOperation() {
  ORV_LOG_INFO("[Info] In");
  AppTypeDecorator::UpdateOperation();
  if (m_AppliedAppType.second == m_UpdatableAppType.second) return;
  if (m_UpdatableAppType.second == APP_TYPE_VALUE_EXTENDED) {
    ORV_LOG_INFO("[Info] FileSystemUtils::InstallPackagedData");
    FileSystemUtils::InstallPackagedData(m_sPackageID, m_sWidgetID, APP_TYPE_CH_FEEDER_CUSTOM,
                                         PACKAGED_TYPE_HBBTV_APP, false);
  } else {
    ChFeederTypes::UninstallPackagedData(m_sPackageID, APP_TYPE_CH_FEEDER_CUSTOM,
                                         PACKAGED_TYPE_HBBTV_APP);
  }
  // The applied value stays as it is: callers rely on it.
  m_UpdatableAppType.second.clear();
}

void ChFeederCustom::StopOperation() {
  ORV_LOG_INFO("[Info] In");
  AppTypeDecorator::StopOperation();
  RequestEvent(EVENT_DELETE_ITEM);
}

void ChFeederCustom::RequestEvent(int eType) {
  if (m_pfnRequestEvent == nullptr) return;
  // The receiver reads the text and does not write to it.
  m_pfnRequestEvent(eType, const_cast<char*>(m_sPackageID.c_str()));
}
