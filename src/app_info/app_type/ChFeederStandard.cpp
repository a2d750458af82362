// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/ChFeederStandard.h"

#include <FCAPI.h>

#include "app_info/app_type/ChFeederPackagedData.h"
#include "common/JsonText.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "utils/FileSystemUtils.h"
#include "utils/PackagedData.h"

namespace {

/// The directory is inserted behind "file:/": "file://x" becomes "file:/<directory>/x".
constexpr std::size_t DIRECTORY_POSITION = 6;

const char* const PROTOCOL_FILE = "file";
const char* const PROTOCOL_HTTP = "http";
const char* const PROTOCOL_HTTPS = "https";

}  // namespace

ChFeederStandard::ChFeederStandard(AppInfo* pAppInfo, const std::string& rMetadataValue)
    : AppTypeLayer(pAppInfo, APP_TYPE_CH_FEEDER_STANDARD, rMetadataValue) {
  for (DataMap* pData : {&m_mapAppliedData, &m_mapUpdatableData}) {
    (*pData)[DATA_KEY_CHANNEL_DATA_URL];
    (*pData)[DATA_KEY_SCHEDULE_DATA_URL];
    (*pData)[BOOST_METADATA_KEY];
  }
}

void ChFeederStandard::CleanUp() {
  RemoveChannelUsingKelvoApi();
  const int iType = GetPackagedDataType(false);
  if (iType == 0) {
    return;
  }
  FileSystemUtils::UninstallPackagedData(m_sPackageID, APP_TYPE_CH_FEEDER_STANDARD, iType);
}

void ChFeederStandard::RunOperation(bool bStarted) {
  AppTypeDecorator::RunOperation(bStarted);
  const int iType = GetPackagedDataType(false);
  if (iType != 0) {
    if (!FileSystemUtils::InstallPackagedData(m_sPackageID, m_sWidgetID,
                                              APP_TYPE_CH_FEEDER_STANDARD, iType, bStarted)) {
      ORV_LOG_ERROR("[ERROR] FileSystemUtils::installPackagedData() return false.");
    }
    if (iType & PACKAGED_TYPE_META_DATA) {
      SetMetaDataDataList(false);
    }
  }
  if (bStarted) {
    return;  // the framework has the record from an earlier run
  }
  if (!AddChannelUsingKelvoApi()) {
    ORV_LOG_DEBUG("[Debug] AddChannelUsingKelvoApi() return false");
  }
}

void ChFeederStandard::UpdateOperation() {
  ORV_LOG_DEBUG("[Debug] Applied Metadata : %s, Updatable Metadata : %s", GetValue(false).c_str(),
                GetValue(true).c_str());
  AppTypeDecorator::UpdateOperation();
  const int iOldType = GetPackagedDataType(false);
  const int iNewType = GetPackagedDataType(true);
  if (iOldType != 0) {
    ORV_LOG_INFO("[Info] FileSystemUtils::UninstallPackagedData");
    ChFeederPackagedData::RemoveForUpdate(m_sPackageID, APP_TYPE_CH_FEEDER_STANDARD, iOldType);
  }
  if (iNewType != 0) {
    ORV_LOG_INFO("[Info] FileSystemUtils::InstallPackagedData");
    FileSystemUtils::InstallPackagedData(m_sPackageID, m_sWidgetID, APP_TYPE_CH_FEEDER_STANDARD,
                                         iNewType, false);
    if (iNewType & PACKAGED_TYPE_META_DATA) {
      SetMetaDataDataList(true);
    }
  }
  if (!UpdateChannelUsingKelvoApi()) {
    ORV_LOG_DEBUG("[Debug] UpdateChannelUsingKelvoApi() return false");
  }
  ClearUpdatable();
}

void ChFeederStandard::ClearUpdatable() {
  // The values in force stay. Intentional: docs/behaviour.md, "An update does not change the
  // applied values".
  const std::lock_guard<std::mutex> lock(m_mutexMetadata);
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
  if (sProtocol == PROTOCOL_FILE) {
    return METADATA_PROTOCOL_FILE;
  }
  if (sProtocol == PROTOCOL_HTTP || sProtocol == PROTOCOL_HTTPS) {
    return METADATA_PROTOCOL_HTTP;
  }
  ORV_LOG_ERROR("[ERROR] Protocol is not defined");
  return METADATA_PROTOCOL_INVALID;
}

int ChFeederStandard::GetPackagedDataType(bool bUpdatable) {
  ORV_LOG_INFO("[Info] GetPackagedDataType bUpdatable:%d", bUpdatable);
  int iType = GetValue(bUpdatable) == APP_TYPE_VALUE_EXTENDED ? PACKAGED_TYPE_HBBTV_APP : 0;
  const auto isFile = [this, bUpdatable](const std::string& rKey) {
    return ParseInputMetaDataProtocol(GetDataOrCreate(bUpdatable, rKey)) == METADATA_PROTOCOL_FILE;
  };
  if (isFile(DATA_KEY_CHANNEL_DATA_URL) || isFile(DATA_KEY_SCHEDULE_DATA_URL)) {
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
  std::string sChannelURL;
  std::string sScheduleURL;
  {
    const std::lock_guard<std::mutex> lock(m_mutexMetadata);
    DataMap& refTargetDataList = bUpdatable ? m_mapUpdatableData : m_mapAppliedData;
    // Both, whatever their protocols and lengths. Intentional: docs/behaviour.md, "A web URL beside
    // a file URL gets the directory too".
    sChannelURL =
        refTargetDataList[DATA_KEY_CHANNEL_DATA_URL].insert(DIRECTORY_POSITION, sDirectory);
    sScheduleURL =
        refTargetDataList[DATA_KEY_SCHEDULE_DATA_URL].insert(DIRECTORY_POSITION, sDirectory);
  }
  ORV_LOG_INFO("[Info] refTargetDataList[CHANNEL_DATA_URL] : %s", sChannelURL.c_str());
  ORV_LOG_INFO("[Info] refTargetDataList[SCHEDULE_DATA_URL] : %s", sScheduleURL.c_str());
}

std::string ChFeederStandard::GetChannelRecord(bool bUpdatable) {
  Json::Value record;
  record["pkg_id"] = m_sPackageID;
  record["widget_id"] = m_sWidgetID;
  record["channel_data_url"] = GetDataOrCreate(bUpdatable, DATA_KEY_CHANNEL_DATA_URL);
  record["schedule_data_url"] = GetDataOrCreate(bUpdatable, DATA_KEY_SCHEDULE_DATA_URL);
  return JsonText::Write(record);
}

bool ChFeederStandard::AddChannelUsingKelvoApi() {
  const std::string sRecord = GetChannelRecord(false);
  FCOrvAppInfoAPI* const pAPI = FCAPI::GetOrvAppInfoAPI();
  if (pAPI == nullptr) {
    ORV_LOG_ERROR("[ERROR] GetOrvAppInfoAPI() return NULL.");
    return false;
  }
  if (pAPI->CreateAppInfo(sRecord)) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] FCOrvAppInfoAPI::CreateAppInfo() return false.");
  return false;
}

bool ChFeederStandard::UpdateChannelUsingKelvoApi() {
  const std::string sRecord = GetChannelRecord(true);
  FCOrvAppInfoAPI* const pAPI = FCAPI::GetOrvAppInfoAPI();
  if (pAPI == nullptr) {
    ORV_LOG_ERROR("[ERROR] GetOrvAppInfoAPI() return NULL.");
    return false;
  }
  if (pAPI->UpdateAppInfo(sRecord)) {
    return true;
  }
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
  if (pAPI->RemoveAppInfo(sRecord)) {
    return true;
  }
  ORV_LOG_ERROR("[ERROR] FCOrvAppInfoAPI::RemoveAppInfo() return false.");
  return false;
}
