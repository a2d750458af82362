// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/AppControlUtils.h"

#include <app_control.h>
#include <app_operation.h>

#include <cstdlib>

#include "common/Log.h"
#include "common/ORVConstants.h"

namespace {

const char LAUNCH_MODE_BACKGROUND[] = "backgroundAtStartup";

const std::map<int, std::string> s_mapAppControlErrorText = {
    {APP_CONTROL_ERROR_NONE, "Successful"},
    {APP_CONTROL_ERROR_PERMISSION_DENIED, "Permission denied"},
    {APP_CONTROL_ERROR_INVALID_PARAMETER, "Invalid parameter"},
    {APP_CONTROL_ERROR_OUT_OF_MEMORY, "Out of Memory"},
    {APP_CONTROL_ERROR_APP_NOT_FOUND, "App Not Found"},
    {APP_CONTROL_ERROR_LAUNCH_REJECTED, "Launch Rejected"},
    {APP_CONTROL_ERROR_LAUNCH_FAILED, "Launch Failed"},
    {APP_CONTROL_ERROR_TIMED_OUT, "Timed Out"},
    {APP_CONTROL_ERROR_IO_ERROR, "IO error"},
};

/// Empty for a code that is not in the table.
const char* GetErrorText(int error) {
  const auto iter = s_mapAppControlErrorText.find(error);
  return iter == s_mapAppControlErrorText.end() ? "" : iter->second.c_str();
}

void SetTarget(app_control_h hAppControl, const std::string& rAppID,
               const std::string& rOperation) {
  // An id or operation that is refused makes the launch request fail.
  app_control_set_app_id(hAppControl, rAppID.c_str());
  app_control_set_operation(hAppControl, rOperation.c_str());
}

int SendAndDestroy(app_control_h hAppControl) {
  const int error = app_control_send_launch_request(hAppControl, nullptr, nullptr);
  app_control_destroy(hAppControl);
  if (error != APP_CONTROL_ERROR_NONE) {
    ORV_LOG_ERROR("[ERROR] app_control_send_launch_request() failed. (Error Message[%d] : %s",
                  error, GetErrorText(error));
  }
  return error;
}

int CreateAppControl(app_control_h* pAppControl) {
  const int error = app_control_create(pAppControl);
  if (error != APP_CONTROL_ERROR_NONE) {
    ORV_LOG_ERROR("[ERROR] app_control_create() failed. (Error Message[%d] :  %s", error,
                  GetErrorText(error));
  }
  return error;
}

bool EnableApp(const std::string& rOperation, const std::string& rAppID,
               const std::string& rCurrentAppID) {
  if (rCurrentAppID == rAppID) {
    ORV_LOG_DEBUG("[Debug] Skipped!!");
    return true;
  }
  const int error = app_operation_set_current_app(rOperation.c_str(), rAppID.c_str());
  if (error != APP_CONTROL_ERROR_NONE) {
    ORV_LOG_ERROR("[ERROR] app_operation_set_current_app() failed. (error type[%d] : %s)", error,
                  GetErrorText(error));
    return false;
  }
  return true;
}

bool DisableApp(const std::string& rOperation, const std::string& rAppID,
                const std::string& rCurrentAppID) {
  if (rCurrentAppID != rAppID) {
    ORV_LOG_DEBUG("[Debug] Skipped!!");
    return true;
  }
  const int error = app_operation_reset_current_app(rOperation.c_str());
  if (error != APP_CONTROL_ERROR_NONE) {
    ORV_LOG_ERROR("[ERROR] app_operation_reset_current_app() failed. (error type[%d] : %s)", error,
                  GetErrorText(error));
    return false;
  }
  return true;
}

}  // namespace

namespace AppControlUtils {

bool LaunchApp(const std::string& rAppID, const std::string& rOperation) {
  ORV_LOG_INFO("[Info] rAppID : %s", rAppID.c_str());
  app_control_h hAppControl = nullptr;
  if (CreateAppControl(&hAppControl) != APP_CONTROL_ERROR_NONE) {
    app_control_destroy(hAppControl);
    return false;
  }
  SetTarget(hAppControl, rAppID, rOperation);
  return SendAndDestroy(hAppControl) == APP_CONTROL_ERROR_NONE;
}

int LaunchApp(const std::string& rAppID, const std::string& rOperation,
              const std::map<std::string, std::string>& rExtraData) {
  ORV_LOG_INFO("[Info] rAppID : %s, rOperation : %s", rAppID.c_str(), rOperation.c_str());
  app_control_h hAppControl = nullptr;
  const int error = CreateAppControl(&hAppControl);
  if (error != APP_CONTROL_ERROR_NONE) {
    return error;
  }
  SetTarget(hAppControl, rAppID, rOperation);
  for (const auto& [rKey, rValue] : rExtraData) {
    ORV_LOG_DEBUG("[Debug] key : %s, value : %s", rKey.c_str(), rValue.c_str());
    app_control_add_extra_data(hAppControl, rKey.c_str(), rValue.c_str());
  }
  return SendAndDestroy(hAppControl);
}

int PreloadWebApp(const std::string& rAppID) {
  return LaunchApp(rAppID, OPERATION_DEFAULT, {{LAUNCH_MODE_KEY, LAUNCH_MODE_BACKGROUND}});
}

bool SetCurrentAppOfAppOperation(const std::string& rOperation, const std::string& rAppID,
                                 bool bEnable) {
  ORV_LOG_INFO("[Info] rOperation : %s, rAppID : %s, bEnable : %d", rOperation.c_str(),
               rAppID.c_str(), bEnable);
  const std::string sCurrentAppID = GetCurrentAppIDOfAppOperation(rOperation);
  return bEnable ? EnableApp(rOperation, rAppID, sCurrentAppID)
                 : DisableApp(rOperation, rAppID, sCurrentAppID);
}

std::string GetCurrentAppIDOfAppOperation(const std::string& rOperation) {
  char* pAppID = nullptr;
  const int error = app_operation_get_current_app(rOperation.c_str(), &pAppID);
  if (error != APP_CONTROL_ERROR_NONE) {
    ORV_LOG_ERROR("[ERROR] app_control_get_current_app() failed. (error type[%d] : %s)", error,
                  GetErrorText(error));
    return {};
  }
  if (pAppID == nullptr) {
    ORV_LOG_ERROR("[ERROR] pAppID is NULL");
    return {};
  }
  ORV_LOG_DEBUG("[Debug] Current AppID : %s", pAppID);
  std::string sAppID = pAppID;
  std::free(pAppID);
  return sAppID;
}

}  // namespace AppControlUtils
