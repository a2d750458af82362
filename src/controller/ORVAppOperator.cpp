// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVAppOperator.h"

#include <exception>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/RecordGuard.h"
#include "controller/WidgetIDWait.h"
#include "utils/WASUtils.h"

namespace {

/// Calls rOperation with the package's record, which may be null. An exception ends here, so the
/// work on other records and what follows the operation are still done.
template <class Operation>
void OperateOnRecord(const std::string& rPackageID, const Operation& rOperation) try {
  const RecordGuard guard(rPackageID);
  AppInfo* pAppInfo = AppInfoCache::GetInstance()->GetAppInfo(rPackageID);
  rOperation(pAppInfo);
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

void Operate(AppInfo& rAppInfo, OperationType eType) {
  switch (eType) {
    case OPERATION_TYPE_UPDATE:
      rAppInfo.UpdateOperation();
      return;
    case OPERATION_TYPE_STOP:
      rAppInfo.StopOperation();
      return;
    default:
      rAppInfo.RunOperation(false);
  }
}

}  // namespace

ORVAppOperator* ORVAppOperator::GetInstance() {
  return SingleInstance<ORVAppOperator>::Get();
}

void ORVAppOperator::DoOperation(const std::string& rPackageID, OperationType eType) {
  ORV_LOG_INFO("[Info] rPackageID : %s, eType : %d", rPackageID.c_str(), eType);
  OperateOnRecord(rPackageID, [&](AppInfo* pAppInfo) {
    if (pAppInfo == nullptr) {
      ORV_LOG_DEBUG("[Debug] Cannot find target App(rPackageID : %s)", rPackageID.c_str());
    } else if (eType == OPERATION_TYPE_RUN && pAppInfo->m_sWidgetID.empty()) {
      WidgetIDWait::Begin(pAppInfo);
    } else {
      Operate(*pAppInfo, eType);
    }
  });
}

void ORVAppOperator::RunAllApps(std::vector<std::string>& rPackageIDs) {
  AppInfoCache::GetInstance()->GetAppIDList(rPackageIDs);
  for (const std::string& rPackageID : rPackageIDs) {
    OperateOnRecord(rPackageID, [](AppInfo* pAppInfo) {
      if (pAppInfo != nullptr) {
        pAppInfo->RunOperation(true);
      }
    });
  }
}

void ORVAppOperator::RunInstalledApps() {
  std::vector<std::string> vPackageIDs;
  AppInfoCache::GetInstance()->GetAppIDList(vPackageIDs);
  // RunAllApps() appends the same ids again, so each record runs twice (docs/behaviour.md,
  // "Package events").
  RunAllApps(vPackageIDs);
}

void ORVAppOperator::RunValidationTesting() {
  WASAppList mapApps;
  if (!WASUtils::GetAllWASAppList(mapApps)) {
    ORV_LOG_DEBUG("[Debug] WASUtils::GetAllWASAppList() return false.");
    return;
  }
  for (const auto& [rPackageID, bGone] : mapApps) {
    if (!bGone) {
      continue;
    }
    OperateOnRecord(rPackageID, [](AppInfo* pAppInfo) {
      if (pAppInfo != nullptr) {
        pAppInfo->StopOperation();
      }
    });
  }
}
