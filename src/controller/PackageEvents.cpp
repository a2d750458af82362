// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/PackageEvents.h"

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "controller/ORVAppCreator.h"
#include "controller/ORVAppOperator.h"
#include "controller/RecordGuard.h"

namespace {

/// The operation may have changed values of the record.
void WriteRecordAgain(const std::string& rPackageID) {
  const RecordGuard guard(rPackageID);
  AppInfoCache* pCache = AppInfoCache::GetInstance();
  AppInfo* pAppInfo = pCache->GetAppInfo(rPackageID);
  if (pAppInfo != nullptr) {
    pCache->UpdateAppInfo(rPackageID, pAppInfo);
  }
}

/// The operation needs the record, so the removal comes second.
void StopAndRemove(const std::string& rPackageID) {
  ORVAppOperator::GetInstance()->DoOperation(rPackageID, OPERATION_TYPE_STOP);
  ORVAppCreator::GetInstance()->RemoveApp(rPackageID);
}

}  // namespace

namespace PackageEvents {

void Install(const std::string& rPackageID) {
  if (!ORVAppCreator::GetInstance()->CreateApp(rPackageID)) {
    ORV_LOG_DEBUG("[Debug] ORVAppCreator::CreateApp() return false.");
    return;
  }
  ORVAppOperator::GetInstance()->DoOperation(rPackageID, OPERATION_TYPE_RUN);
}

void Update(const std::string& rPackageID) {
  switch (ORVAppCreator::GetInstance()->UpdateApp(rPackageID)) {
    case UPDATE_RESULT_UPDATE:
      ORVAppOperator::GetInstance()->DoOperation(rPackageID, OPERATION_TYPE_UPDATE);
      WriteRecordAgain(rPackageID);
      return;
    case UPDATE_RESULT_CREATE:
      Install(rPackageID);
      return;
    case UPDATE_RESULT_REMOVE:
      StopAndRemove(rPackageID);
      return;
    case UPDATE_RESULT_FAIL:
      ORV_LOG_DEBUG("[Debug] ORVAppCreator::UpdateApp() return false.");
  }
}

void Uninstall(const std::string& rPackageID) {
  ORV_LOG_INFO("[Info] packageID : %s", rPackageID.c_str());
  StopAndRemove(rPackageID);
}

}  // namespace PackageEvents
