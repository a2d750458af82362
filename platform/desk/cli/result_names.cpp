// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/result_names.h"

#include <app_control.h>

namespace desk::cli {

std::string AppControlResultName(int code) {
  switch (code) {
    case APP_CONTROL_ERROR_IO_ERROR:
      return "input or output error";
    case APP_CONTROL_ERROR_PERMISSION_DENIED:
      return "permission denied";
    case APP_CONTROL_ERROR_INVALID_PARAMETER:
      return "invalid parameter";
    case APP_CONTROL_ERROR_APP_NOT_FOUND:
      return "app not found";
    case APP_CONTROL_ERROR_LAUNCH_REJECTED:
      return "launch rejected";
    case APP_CONTROL_ERROR_LAUNCH_FAILED:
      return "launch failed";
    case APP_CONTROL_ERROR_TIMED_OUT:
      return "timed out";
    default:
      return "code " + std::to_string(code);
  }
}

}  // namespace desk::cli
