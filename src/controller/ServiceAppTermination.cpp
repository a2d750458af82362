// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ServiceAppTermination.h"

#include <app_manager.h>
#include <app_manager_extension.h>
#include <signal.h>

#include <map>

#include "common/Log.h"

namespace {

// For log lines.
const std::map<int, std::string> AppManagerErrorMessages = {
    {APP_MANAGER_ERROR_NONE, "Successful"},
    {APP_MANAGER_ERROR_INVALID_PARAMETER, "Invalid parameter"},
    {APP_MANAGER_ERROR_OUT_OF_MEMORY, "Out of memory"},
    {APP_MANAGER_ERROR_IO_ERROR, "Internal I/O error"},
    {APP_MANAGER_ERROR_NO_SUCH_APP, "No such application"},
    {APP_MANAGER_ERROR_DB_FAILED, "Database error"},
    {APP_MANAGER_ERROR_INVALID_PACKAGE, "Invalid package name"},
    {APP_MANAGER_ERROR_APP_NO_RUNNING, "App is not running"},
    {APP_MANAGER_ERROR_REQUEST_FAILED, "Internal aul request error"},
    {APP_MANAGER_ERROR_PERMISSION_DENIED, "Permission denied"},
    {APP_MANAGER_ERROR_NOT_SUPPORTED, "Not supported (Since 3.0)"},
};

bool KillApp(app_context_h hContext) {
  pid_t pid = 1;
  // The context is already destroyed; the platform answers or reports an error (docs/behaviour.md,
  // "Termination").
  const int ret = app_context_get_pid(hContext, &pid);
  if (ret != 0 || pid < 1) {
    ORV_LOG_DEBUG("[Debug] Cannot get pid.(ret : %d)", ret);
    return false;
  }
  ORV_LOG_DEBUG("[Debug] Tartget pid : %d", pid);
  return kill(pid, SIGKILL) == 0;
}

}  // namespace

namespace ServiceAppTermination {

const char* GetErrorText(int error) {
  const auto iter = AppManagerErrorMessages.find(error);
  return iter == AppManagerErrorMessages.end() ? "" : iter->second.c_str();
}

bool TerminateApp(app_context_h hContext, const std::string& rServiceID) {
  int ret = app_manager_terminate_app(hContext);
  if (ret != 0) {
    // The context is not destroyed on this path (docs/behaviour.md, "Termination").
    ORV_LOG_DEBUG("[Debug] app_manager_terminate_app() failed = %s [%s]", GetErrorText(ret),
                  rServiceID.c_str());
    return false;
  }
  ret = app_context_destroy(hContext);
  if (ret != 0) {
    ORV_LOG_DEBUG("[Debug] app_context_destroy() failed = %s [%s]", GetErrorText(ret),
                  rServiceID.c_str());
  }
  return KillApp(hContext);
}

}  // namespace ServiceAppTermination
