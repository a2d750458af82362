// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// What the installer task does with its events, and the reset of all apps.
#include <exception>
#include <memory>
#include <vector>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/ORVAppCreator.h"
#include "controller/ORVAppOperator.h"
#include "controller/ORVInstaller.h"
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

}  // namespace

bool ORVInstaller::t_OnEvent(const FSEvent* pEvent) try {
  if (FCTask::t_OnEvent(pEvent)) {
    return true;
  }
  ORV_LOG_INFO("[Info] pEvent : %d", static_cast<int>(pEvent->type));
  m_Dispatch(*pEvent);
  return true;
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return true;
}

void ORVInstaller::m_Dispatch(const FSEvent& rEvent) {
  const int type = static_cast<int>(rEvent.type);
  switch (type) {
    case EVENT_PACKAGE_INSTALLED:
    case EVENT_PACKAGE_UPDATED:
    case EVENT_PACKAGE_UNINSTALLED: {
      if (rEvent.P0 == nullptr) {
        ORV_LOG_ERROR("[ERROR] l[0] param is NULL.");
        return;
      }
      // The payload is freed before the work begins.
      std::unique_ptr<std::string> pPayload(static_cast<std::string*>(rEvent.P0));
      const std::string sPackageID = *pPayload;
      pPayload.reset();
      m_DispatchPackageEvent(type, sPackageID);
      return;
    }
    case RUN_VALIDATION_TESTING:
      m_RunValidationTesting();
      return;
    case SIGNAL_TVS_ACTIVATE:
      m_PreloadWebApps();
      return;
    case EVENT_TVS_TIME_TIMER:
      m_CheckBoostFlagWithCh();
      return;
    case VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE:
      m_RunCustomFeeders();
      return;
    default:
      ORV_LOG_ERROR("[ERROR] Invalid EventType : %d", type);
  }
}

void ORVInstaller::m_DispatchPackageEvent(int type, const std::string& rPackageID) {
  if (type == EVENT_PACKAGE_INSTALLED) {
    m_InstallApp(rPackageID);
  } else if (type == EVENT_PACKAGE_UPDATED) {
    m_UpdateApp(rPackageID);
  } else {
    m_UninstallApp(rPackageID);
  }
}

void ORVInstaller::m_InstallApp(const std::string& rPackageID) {
  if (!ORVAppCreator::GetInstance()->CreateApp(rPackageID)) {
    ORV_LOG_DEBUG("[Debug] ORVAppCreator::CreateApp() return false.");
    return;
  }
  ORVAppOperator::GetInstance()->DoOperation(rPackageID, OPERATION_TYPE_RUN);
}

void ORVInstaller::m_UpdateApp(const std::string& rPackageID) {
  switch (ORVAppCreator::GetInstance()->UpdateApp(rPackageID)) {
    case UPDATE_RESULT_UPDATE:
      ORVAppOperator::GetInstance()->DoOperation(rPackageID, OPERATION_TYPE_UPDATE);
      WriteRecordAgain(rPackageID);
      return;
    case UPDATE_RESULT_CREATE:
      m_InstallApp(rPackageID);
      return;
    case UPDATE_RESULT_REMOVE:
      ORVAppOperator::GetInstance()->DoOperation(rPackageID, OPERATION_TYPE_STOP);
      ORVAppCreator::GetInstance()->RemoveApp(rPackageID);
      return;
    case UPDATE_RESULT_FAIL:
      ORV_LOG_DEBUG("[Debug] ORVAppCreator::UpdateApp() return false.");
  }
}

void ORVInstaller::m_UninstallApp(const std::string& rPackageID) {
  ORV_LOG_INFO("[Info] packageID : %s", rPackageID.c_str());
  // The operation needs the record, so the removal comes second.
  ORVAppOperator::GetInstance()->DoOperation(rPackageID, OPERATION_TYPE_STOP);
  ORVAppCreator::GetInstance()->RemoveApp(rPackageID);
}

void TellahubResetCallbackFunc(keynode_t* /*keynode*/, void* /*user_data*/) try {
  int value = -1;
  if (vconf_get_int(VCONFKEY_TELLAHUB_RESET.c_str(), &value) != 0) {
    ORV_LOG_ERROR("[ERROR] vconf_get_int() failed.");
    return;
  }
  ORV_LOG_DEBUG("[Debug] VCONFKEY_TELLAHUB_RESET value %d", value);
  if (value != 0) {
    return;
  }
  ORV_LOG_DEBUG("[Debug] Reset AppInfo");
  // Every record runs before its removal, twice (docs/behaviour.md, "Package events").
  ORVAppOperator::GetInstance()->RunInstalledApps();
  std::vector<std::string> vPackageIDs;
  AppInfoCache::GetInstance()->GetAppIDList(vPackageIDs);
  for (const std::string& rPackageID : vPackageIDs) {
    ORVAppCreator::GetInstance()->RemoveApp(rPackageID);
  }
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}
