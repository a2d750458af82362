// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/ChFeederCustom.h"

#include "app_info/app_type/ChFeederPackagedData.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "utils/PackagedData.h"

namespace {

// The scheduler's numbers; this layer does not include its header.
constexpr int EVENT_ADD_ITEM = 1000;
constexpr int EVENT_DELETE_ITEM = 1001;

}  // namespace

ChFeederCustom::ChFeederCustom(AppInfo* pAppInfo, const std::string& rMetadataValue,
                               RequestEventCallback pfnRequestEvent)
    : AppTypeLayer(pAppInfo, APP_TYPE_CH_FEEDER_CUSTOM, rMetadataValue),
      m_pfnRequestEvent(pfnRequestEvent) {
  // In force only: a staged date is dropped.
  m_mapAppliedData[DATA_KEY_EXPIRATION_DATE];
}

void ChFeederCustom::CleanUp() {
  RequestEvent(EVENT_DELETE_ITEM);
  if (GetValue(false) != APP_TYPE_VALUE_EXTENDED) {
    return;
  }
  FileSystemUtils::UninstallPackagedData(m_sPackageID, APP_TYPE_CH_FEEDER_CUSTOM,
                                         PACKAGED_TYPE_HBBTV_APP);
}

void ChFeederCustom::RunOperation(bool bStarted) {
  AppTypeDecorator::RunOperation(bStarted);
  if (GetValue(false) == APP_TYPE_VALUE_EXTENDED &&
      !FileSystemUtils::InstallPackagedData(m_sPackageID, m_sWidgetID, APP_TYPE_CH_FEEDER_CUSTOM,
                                            PACKAGED_TYPE_HBBTV_APP, bStarted)) {
    ORV_LOG_ERROR("[ERROR] FileSystemUtils::InstallPackagedData() return false.");
  }
  RequestEvent(EVENT_ADD_ITEM);
}

void ChFeederCustom::UpdateOperation() {
  ORV_LOG_INFO("[Info] In");
  AppTypeDecorator::UpdateOperation();
  const std::string sUpdatable = GetValue(true);
  if (GetValue(false) == sUpdatable) {
    return;
  }
  if (sUpdatable == APP_TYPE_VALUE_EXTENDED) {
    ORV_LOG_INFO("[Info] FileSystemUtils::InstallPackagedData");
    FileSystemUtils::InstallPackagedData(m_sPackageID, m_sWidgetID, APP_TYPE_CH_FEEDER_CUSTOM,
                                         PACKAGED_TYPE_HBBTV_APP, false);
  } else {
    ChFeederPackagedData::RemoveForUpdate(m_sPackageID, APP_TYPE_CH_FEEDER_CUSTOM,
                                          PACKAGED_TYPE_HBBTV_APP);
  }
  // The value in force stays. Intentional: docs/behaviour.md, "An update clears the staged value
  // and keeps the applied one".
  ClearUpdatableValue();
}

void ChFeederCustom::StopOperation() {
  ORV_LOG_INFO("[Info] In");
  AppTypeDecorator::StopOperation();
  RequestEvent(EVENT_DELETE_ITEM);
}

void ChFeederCustom::RequestEvent(int eType) {
  if (m_pfnRequestEvent == nullptr) {
    return;
  }
  // The receiver reads the text and does not write to it.
  m_pfnRequestEvent(eType, const_cast<char*>(m_sPackageID.c_str()));
}
