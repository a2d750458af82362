// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/AllRecords.h"

#include <string>
#include <vector>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/ORVAppCreator.h"
#include "controller/ORVAppOperator.h"
#include "utils/AppControlUtils.h"

namespace AllRecords {

void RunValidationTesting() {
  ORV_LOG_DEBUG("[Debug] RUN_VALIDATION_TESTING");
  // Each fetches the web-app service's list itself: the second runs even if the first fails.
  ORVAppOperator::GetInstance()->RunValidationTesting();
  ORVAppCreator::GetInstance()->RunValidationTesting();
}

void PreloadWebApps() {
  ORV_LOG_INFO("[Info] SIGNAL_TVS_ACTIVATE event comming");
  std::vector<PreloadingApp> vApps;
  AppInfoCache::GetInstance()->GetPreloadingApps(vApps);
  for (const auto& [rAppID, rWidgetID] : vApps) {
    ORV_LOG_INFO("[Info] PreloadWebApp appID : %s, widgetID :%s", rAppID.c_str(),
                 rWidgetID.c_str());
    AppControlUtils::PreloadWebApp(rAppID);  // not retried here
  }
}

void RunCustomFeeders() {
  ORV_LOG_INFO("[Info] VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE event comming");
  std::vector<std::string> vPackageIDs;
  AppInfoCache::GetInstance()->GetAppIDListByType(APP_TYPE_CH_FEEDER_CUSTOM, vPackageIDs);
  // RunAllApps() appends every id, so the custom feeders run first and again among all records
  // (docs/behaviour.md, "Validation, activation, virtual services").
  ORVAppOperator::GetInstance()->RunAllApps(vPackageIDs);
}

void RunAndRemove() {
  // Every record runs before its removal, twice (docs/behaviour.md, "Package events").
  ORVAppOperator::GetInstance()->RunInstalledApps();
  std::vector<std::string> vPackageIDs;
  AppInfoCache::GetInstance()->GetAppIDList(vPackageIDs);
  for (const std::string& rPackageID : vPackageIDs) {
    ORVAppCreator::GetInstance()->RemoveApp(rPackageID);
  }
}

}  // namespace AllRecords
