// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/CustomUIStandard.h"

#include "app_info/app_type/CustomUITypes.h"
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
    : AppTypeDecorator(pAppInfo, APP_TYPE_CUSTOM_UI_STANDARD, rMetadataValue) {
  // Applied only: the option cannot be staged before the first update has made its key.
  m_mapAppliedData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT];
}

AppInfo* CustomUIStandard::DecorateAppType(AppInfo* pAppInfo, const std::string& rMetadataValue) {
  ORV_LOG_INFO("[Info] rMetadataValue : %s", rMetadataValue.c_str());
  return new CustomUIStandard(pAppInfo, rMetadataValue);  // owned by the caller until Release()
}

void CustomUIStandard::Release(AppInfo* pAppInfo) {
  delete static_cast<CustomUIStandard*>(pAppInfo);
}

AppInfo::ReleaseFunction CustomUIStandard::GetReleaseFunction() const {
  return &Release;
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
  ORV_LOG_DEBUG("[Debug] Applied Metadata : %s, Updatable Metadata : %s",
                m_AppliedAppType.second.c_str(), m_UpdatableAppType.second.c_str());
  AppTypeDecorator::UpdateOperation();
  if (m_UpdatableAppType.second.empty()) return;
  if (!IsUpdateNeeded()) return;
  m_AppliedAppType.second = m_UpdatableAppType.second;
  // Makes the staged key where it is missing, so a first update wipes the option: settled
  // behaviour.
  m_mapAppliedData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT] =
      m_mapUpdatableData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT];
  if (!WriteAppInfoVconfKey(false)) {
    ORV_LOG_DEBUG("[Debug] WriteAppInfoVconfKey() return false.");
    return;
  }
  Preload();
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
  CustomUITypes::AppendKnownNames(rMetadataValue, s_mapBannerTypes, rTypes);
}

bool CustomUIStandard::WriteAppInfoVconfKey(bool bClear) {
  Json::Value appInfo =
      CustomUITypes::MakeAppInfo(m_sPackageID, m_sAppID, m_sWidgetID, m_mapAppliedData);
  appInfo["banner_types"] = m_AppliedAppType.second;
  return CustomUITypes::WriteAppInfoVconfKey(MEMBER_CUSTOM_BANNER, appInfo, bClear);
}

bool CustomUIStandard::IsUpdateNeeded() {
  std::vector<BannerType> vApplied;
  std::vector<BannerType> vUpdatable;
  GetEnabledBannerTypes(m_AppliedAppType.second, vApplied);
  GetEnabledBannerTypes(m_UpdatableAppType.second, vUpdatable);
  return vApplied != vUpdatable || m_mapAppliedData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT] !=
                                       m_mapUpdatableData[DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT];
}

void CustomUIStandard::Preload() {
  AppPreloadingUtils::PreloadAppAndRegisterAppStatusChangedCB(
      m_sAppID, APP_TYPE_CUSTOM_UI_STANDARD, AppPreloadingUtils::WebAppStatusCallback());
}
