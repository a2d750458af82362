// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The events of the installer task that look at all records at once.
#include <vector>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/ORVAppCreator.h"
#include "controller/ORVAppOperator.h"
#include "controller/ORVInstaller.h"
#include "utils/AppControlUtils.h"

void ORVInstaller::m_RunValidationTesting() {
  ORV_LOG_DEBUG("[Debug] RUN_VALIDATION_TESTING");
  // Each fetches the web-app service's list itself: the second runs even if the first fails.
  ORVAppOperator::GetInstance()->RunValidationTesting();
  ORVAppCreator::GetInstance()->RunValidationTesting();
}

void ORVInstaller::m_PreloadWebApps() {
  ORV_LOG_INFO("[Info] SIGNAL_TVS_ACTIVATE event comming");
  std::vector<PreloadingApp> vApps;
  AppInfoCache::GetInstance()->GetPreloadingApps(vApps);
  for (const auto& [rAppID, rWidgetID] : vApps) {
    ORV_LOG_INFO("[Info] PreloadWebApp appID : %s, widgetID :%s", rAppID.c_str(),
                 rWidgetID.c_str());
    AppControlUtils::PreloadWebApp(rAppID);  // not retried here
  }
}

void ORVInstaller::m_RunCustomFeeders() {
  ORV_LOG_INFO("[Info] VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE event comming");
  std::vector<std::string> vPackageIDs;
  AppInfoCache::GetInstance()->GetAppIDListByType(APP_TYPE_CH_FEEDER_CUSTOM, vPackageIDs);
  // RunAllApps() appends every id, so the custom feeders run first and again among all records
  // (docs/behaviour.md, "Validation, activation, virtual services").
  ORVAppOperator::GetInstance()->RunAllApps(vPackageIDs);
}
