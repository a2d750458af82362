// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/ChFeederStandard.h"

#include <FCAPI.h>

#include <exception>

#include "app_info/app_type/ChFeederTypes.h"
#include "common/JsonText.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "utils/FileSystemUtils.h"
#include "utils/PackagedData.h"

namespace {

/// The directory goes behind "file:/", so that "file://x" becomes "file:/<directory>/x".
constexpr std::size_t DIRECTORY_POSITION = 6;

const char* const PROTOCOL_FILE = "file";
const char* const PROTOCOL_HTTP = "http";
const char* const PROTOCOL_HTTPS = "https";

}  // namespace

ChFeederStandard::ChFeederStandard(AppInfo* pAppInfo, const std::string& rMetadataValue)
    : AppTypeDecorator(pAppInfo, APP_TYPE_CH_FEEDER_STANDARD, rMetadataValue) {
  for (DataMap* pData : {&m_mapAppliedData, &m_mapUpdatableData}) {
    (*pData)[DATA_KEY_CHANNEL_DATA_URL];
    (*pData)[DATA_KEY_SCHEDULE_DATA_URL];
    (*pData)[BOOST_METADATA_KEY];
  }
}

AppInfo* ChFeederStandard::DecorateAppType(AppInfo* pAppInfo, const std::string& rMetadataValue) {
  ORV_LOG_INFO("[Info] rMetadataValue : %s", rMetadataValue.c_str());
  return new ChFeederStandard(pAppInfo, rMetadataValue);  // owned by the caller until Release()
}

void ChFeederStandard::Release(AppInfo* pAppInfo) {
  if (pAppInfo == nullptr) return;
  auto* const pThis = static_cast<ChFeederStandard*>(pAppInfo);
  pThis->CleanUp();
  delete pThis;
}

void ChFeederStandard::CleanUp() try {
  RemoveChannelUsingKelvoApi();
  const int iType = GetPackagedDataType(false);
  if (iType == 0) return;
  FileSystemUtils::UninstallPackagedData(m_sPackageID, APP_TYPE_CH_FEEDER_STANDARD, iType);
} catch (const std::exception& e) {
  // The next layer outward releases this one in its destructor, which nothing may leave.
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

AppInfo::ReleaseFunction ChFeederStandard::GetReleaseFunction() const {
  return &Release;
}

void ChFeederStandard::RunOperation(bool bStarted) {
  AppTypeDecorator::RunOperation(bStarted);
  const int iType = GetPackagedDataType(false);
  if (iType != 0) {
    if (!FileSystemUtils::InstallPackagedData(m_sPackageID, m_sWidgetID,
                                              APP_TYPE_CH_FEEDER_STANDARD, iType, bStarted)) {
      ORV_LOG_ERROR("[ERROR] FileSystemUtils::installPackagedData() return false.");
    }
    if (iType & PACKAGED_TYPE_META_DATA) SetMetaDataDataList(false);
  }
  if (bStarted) return;  // the framework knows the app from an earlier run
  if (!AddChannelUsingKelvoApi()) {
    ORV_LOG_DEBUG("[Debug] AddChannelUsingKelvoApi() return false");
  }
}

void ChFeederStandard::UpdateOperation() {
  ORV_LOG_DEBUG("[Debug] Applied Metadata : %s, Updatable Metadata : %s",
                m_AppliedAppType.second.c_str(), m_UpdatableAppType.second.c_str());
  AppTypeDecorator::UpdateOperation();
  const int iOldType = GetPackagedDataType(false);
  const int iNewType = GetPackagedDataType(true);
  if (iOldType != 0) {
    ORV_LOG_INFO("[Info] FileSystemUtils::UninstallPackagedData");
    ChFeederTypes::UninstallPackagedData(m_sPackageID, APP_TYPE_CH_FEEDER_STANDARD, iOldType);
  }
  if (iNewType != 0) {
    ORV_LOG_INFO("[Info] FileSystemUtils::InstallPackagedData");
    FileSystemUtils::InstallPackagedData(m_sPackageID, m_sWidgetID, APP_TYPE_CH_FEEDER_STANDARD,
                                         iNewType, false);
    if (iNewType & PACKAGED_TYPE_META_DATA) SetMetaDataDataList(true);
  }
  if (!UpdateChannelUsingKelvoApi()) {
    ORV_LOG_DEBUG("[Debug] UpdateChannelUsingKelvoApi() return false");
  }
  // The applied side stays as it is, and so does the staged boost mark: callers rely on it.
  m_UpdatableAppType.second.clear();
  m_mapUpdatableData[DATA_KEY_CHANNEL_DATA_URL].clear();
  m_mapUpdatableData[DATA_KEY_SCHEDULE_DATA_URL].clear();
}

void ChFeederStandard::StopOperation() {
  ORV_LOG_INFO("[Info] In");
  AppTypeDecorator::StopOperation();
  if (!RemoveChannelUsingKelvoApi()) {
    ORV_LOG_DEBUG("[Debug] RemoveChannelUsingKelvoApi() return false");
  }
}

MetadataProtocol ChFeederStandard::ParseInputMetaDataProtocol(
    const std::string& sInputMetaDataURL) {
  ORV_LOG_INFO("[Info] sInputMetaDataURL %s", sInputMetaDataURL.c_str());
  const std::size_t uColon = sInputMetaDataURL.find(':');
  if (uColon == std::string::npos) {
    ORV_LOG_ERROR("[ERROR] Invalid MetaData URL - No Colon");
    return METADATA_PROTOCOL_INVALID;
  }
  const std::string sProtocol = sInputMetaDataURL.substr(0, uColon);
  ORV_LOG_INFO("[Info] metaDataProtocol %s", sProtocol.c_str());
  if (sProtocol == PROTOCOL_FILE) return METADATA_PROTOCOL_FILE;
  if (sProtocol == PROTOCOL_HTTP || sProtocol == PROTOCOL_HTTPS) return METADATA_PROTOCOL_HTTP;
  ORV_LOG_ERROR("[ERROR] Protocol is not defined");
  return METADATA_PROTOCOL_INVALID;
}

int ChFeederStandard::GetPackagedDataType(bool bUpdatable) {
  ORV_LOG_INFO("[Info] GetPackagedDataType bUpdatable:%d", bUpdatable);
  DataMap& rData = bUpdatable ? m_mapUpdatableData : m_mapAppliedData;
  const auto& rAppType = bUpdatable ? m_UpdatableAppType : m_AppliedAppType;
  int iType = rAppType.second == APP_TYPE_VALUE_EXTENDED ? PACKAGED_TYPE_HBBTV_APP : 0;
  if (ParseInputMetaDataProtocol(rData[DATA_KEY_CHANNEL_DATA_URL]) == METADATA_PROTOCOL_FILE ||
      ParseInputMetaDataProtocol(rData[DATA_KEY_SCHEDULE_DATA_URL]) == METADATA_PROTOCOL_FILE) {
    iType |= PACKAGED_TYPE_META_DATA;
  }
  ORV_LOG_INFO("[Info] PackagedDataType : %d", iType);
  return iType;
}

void ChFeederStandard::SetMetaDataDataList(bool bUpdatable) {
  ORV_LOG_INFO("[Info] SetMetaDataDataList bUpdatable:%d", bUpdatable);
  const std::string sDirectory = FileSystemUtils::GetPackagedMetaDataDirectoryPath(m_sPackageID);
  if (sDirectory.empty()) {
    ORV_LOG_ERROR("[ERROR] Invalid PackagedMetaDataDirectoryPath : %s", sDirectory.c_str());
    return;
  }
  DataMap& refTargetDataList = bUpdatable ? m_mapUpdatableData : m_mapAppliedData;
  std::string& rChannelURL = refTargetDataList[DATA_KEY_CHANNEL_DATA_URL];
  std::string& rScheduleURL = refTargetDataList[DATA_KEY_SCHEDULE_DATA_URL];
  // Both, whatever their protocols, and no test of their length: settled behaviour.
  rChannelURL.insert(DIRECTORY_POSITION, sDirectory);
  rScheduleURL.insert(DIRECTORY_POSITION, sDirectory);
  ORV_LOG_INFO("[Info] refTargetDataList[CHANNEL_DATA_URL] : %s", rChannelURL.c_str());
  ORV_LOG_INFO("[Info] refTargetDataList[SCHEDULE_DATA_URL] : %s", rScheduleURL.c_str());
}

std::string ChFeederStandard::GetChannelRecord(DataMap& rData) const {
  Json::Value record;
  record["pkg_id"] = m_sPackageID;
  record["widget_id"] = m_sWidgetID;
  record["channel_data_url"] = rData[DATA_KEY_CHANNEL_DATA_URL];
  record["schedule_data_url"] = rData[DATA_KEY_SCHEDULE_DATA_URL];
  return JsonText::Write(record);
}

bool ChFeederStandard::AddChannelUsingKelvoApi() {
  const std::string sRecord = GetChannelRecord(m_mapAppliedData);
  FCOrvAppInfoAPI* const pAPI = FCAPI::GetOrvAppInfoAPI();
  if (pAPI == nullptr) {
    ORV_LOG_ERROR("[ERROR] GetOrvAppInfoAPI() return NULL.");
    return false;
  }
  if (pAPI->CreateAppInfo(sRecord)) return true;
  ORV_LOG_ERROR("[ERROR] FCOrvAppInfoAPI::CreateAppInfo() return false.");
  return false;
}

bool ChFeederStandard::UpdateChannelUsingKelvoApi() {
  const std::string sRecord = GetChannelRecord(m_mapUpdatableData);
  FCOrvAppInfoAPI* const pAPI = FCAPI::GetOrvAppInfoAPI();
  if (pAPI == nullptr) {
    ORV_LOG_ERROR("[ERROR] GetOrvAppInfoAPI() return NULL.");
    return false;
  }
  if (pAPI->UpdateAppInfo(sRecord)) return true;
  ORV_LOG_ERROR("[ERROR] FCOrvAppInfoAPI::UpdateAppInfo() return false.");
  return false;
}

bool ChFeederStandard::RemoveChannelUsingKelvoApi() {
  Json::Value record;
  record["pkg_id"] = m_sPackageID;
  const std::string sRecord = JsonText::Write(record);
  FCOrvAppInfoAPI* const pAPI = FCAPI::GetOrvAppInfoAPI();
  if (pAPI == nullptr) {
    ORV_LOG_ERROR("[ERROR] GetOrvAppInfoAPI() return NULL.");
    return false;
  }
  if (pAPI->RemoveAppInfo(sRecord)) return true;
  ORV_LOG_ERROR("[ERROR] FCOrvAppInfoAPI::RemoveAppInfo() return false.");
  return false;
}
