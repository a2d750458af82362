// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/CustomUIStandard.h"

#include "app_info/app_type/CustomUIAnnouncement.h"
#include "app_info/app_type/CustomUINames.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "utils/AppPreloadingUtils.h"

namespace {

const char* const MEMBER_CUSTOM_BANNER = "CustomBanner";

}  // namespace

const std::map<std::string, CustomUIStandard::BannerType> CustomUIStandard::s_mapBannerTypes = {
    {::BANNER_TYPE_INFO, CustomUIStandard::BANNER_TYPE_INFO},
    {::BANNER_TYPE_CHANNEL, CustomUIStandard::BANNER_TYPE_CHANNEL}};

CustomUIStandard::CustomUIStandard(AppInfo* pAppInfo, const std::string& rMetadataValue)
    : AppTypeLayer(pAppInfo, APP_TYPE_CUSTOM_UI_STANDARD, rMetadataValue) {
  // In force only: the option can be staged once an update has created its staged key.
  m_mapAppliedData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT];
}

void CustomUIStandard::RunOperation(bool bStarted) {
  AppTypeDecorator::RunOperation(bStarted);
  if (!bStarted && !WriteAppInfoVconfKey(false)) {
    ORV_LOG_DEBUG("[Debug] WriteAppInfoVconfKey() return false.");
    return;
  }
  Preload();
}

void CustomUIStandard::UpdateOperation() {
  ORV_LOG_DEBUG("[Debug] Applied Metadata : %s, Updatable Metadata : %s", GetValue(false).c_str(),
                GetValue(true).c_str());
  AppTypeDecorator::UpdateOperation();
  if (GetValue(true).empty()) {
    return;
  }
  if (!IsUpdateNeeded()) {
    return;
  }
  {
    const std::lock_guard<std::mutex> lock(m_mutexMetadata);
    m_AppliedAppType.second = m_UpdatableAppType.second;
    // Creates a missing staged key, so a first update wipes the option. Intentional:
    // docs/behaviour.md, "The first update that reaches the option clears it".
    m_mapAppliedData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT] =
        m_mapUpdatableData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT];
  }
  if (!WriteAppInfoVconfKey(false)) {
    ORV_LOG_DEBUG("[Debug] WriteAppInfoVconfKey() return false.");
    return;
  }
  Preload();
  const std::lock_guard<std::mutex> lock(m_mutexMetadata);
  m_UpdatableAppType.second.clear();
  m_mapUpdatableData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT].clear();
}

void CustomUIStandard::StopOperation() {
  ORV_LOG_INFO("[Info] In");
  AppTypeDecorator::StopOperation();
  WriteAppInfoVconfKey(true);
}

void CustomUIStandard::GetEnabledBannerTypes(const std::string& rMetadataValue,
                                             std::vector<BannerType>& rTypes) {
  ORV_LOG_INFO("[Info] rMetadataValue : %s", rMetadataValue.c_str());
  CustomUINames::AppendKnownNames(rMetadataValue, s_mapBannerTypes, rTypes);
}

bool CustomUIStandard::WriteAppInfoVconfKey(bool bClear) {
  Json::Value appInfo =
      CustomUIAnnouncement::MakeAppInfo(m_sPackageID, m_sAppID, m_sWidgetID, GetData(false));
  appInfo["banner_types"] = GetValue(false);
  return CustomUIAnnouncement::WriteAppInfoVconfKey(MEMBER_CUSTOM_BANNER, appInfo, bClear);
}

bool CustomUIStandard::IsUpdateNeeded() {
  std::vector<BannerType> vApplied;
  std::vector<BannerType> vUpdatable;
  GetEnabledBannerTypes(GetValue(false), vApplied);
  GetEnabledBannerTypes(GetValue(true), vUpdatable);
  return vApplied != vUpdatable || IsOptionChanged();
}

bool CustomUIStandard::IsOptionChanged() {
  return GetDataOrCreate(false, DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT) !=
         GetDataOrCreate(true, DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT);
}

void CustomUIStandard::Preload() {
  AppPreloadingUtils::PreloadAppAndRegisterAppStatusChangedCB(
      m_sAppID, APP_TYPE_CUSTOM_UI_STANDARD, AppPreloadingUtils::WebAppStatusCallback());
}
