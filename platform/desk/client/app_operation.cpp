// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_control.h>
#include <app_operation.h>

#include <cstring>

#include "desk/client/call.h"
#include "desk/client/connection.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;

int app_operation_get_current_app(const char* operation, char** app_id) {
  Call call("app_operation_get_current_app", operation);
  return call.Run<int>(APP_CONTROL_ERROR_IO_ERROR, [&]() -> int {
    if (operation == nullptr || app_id == nullptr) {
      return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    const Json::Value reply = Connection::Get().Call("op.get", Request({{"operation", operation}}));
    const int result = reply["result"].asInt();
    if (result == APP_CONTROL_ERROR_NONE) {
      *app_id = reply["app"].isString() ? strdup(reply["app"].asCString()) : nullptr;
      call.AddOutput(*app_id);
    }
    return result;
  });
}

int app_operation_set_current_app(const char* operation, const char* app_id) {
  Call call("app_operation_set_current_app", operation, app_id);
  return call.Run<int>(APP_CONTROL_ERROR_IO_ERROR, [&]() -> int {
    if (operation == nullptr || app_id == nullptr) {
      return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    return Connection::Get()
        .Call("op.set", Request({{"operation", operation}, {"app", app_id}}))["result"]
        .asInt();
  });
}

int app_operation_reset_current_app(const char* operation) {
  Call call("app_operation_reset_current_app", operation);
  return call.Run<int>(APP_CONTROL_ERROR_IO_ERROR, [&]() -> int {
    if (operation == nullptr) {
      return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    return Connection::Get()
        .Call("op.reset", Request({{"operation", operation}}))["result"]
        .asInt();
  });
}
