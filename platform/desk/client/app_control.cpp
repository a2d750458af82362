// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_control.h>

#include <map>
#include <mutex>
#include <string>

#include "client/call.h"
#include "client/connection.h"
#include "client/handle_table.h"

using desk::Call;
using desk::Connection;
using desk::Number;
using desk::Request;

namespace {

// One owner at a time, as the header says: no lock of its own.
struct LaunchRequest {
  std::string app;
  std::string operation;
  std::map<std::string, std::string> extra;
};

desk::HandleTable<app_control_h, LaunchRequest>& Requests() {
  static auto* const requests = new desk::HandleTable<app_control_h, LaunchRequest>;
  return *requests;
}

// Runs the edit of a request that is there, with a value that is there.
template <typename Edit>
int EditRequest(Call& call, app_control_h handle, const char* value, Edit edit) {
  return call.Run<int>(APP_CONTROL_ERROR_INVALID_PARAMETER, [&]() -> int {
    const auto request = Requests().Find(handle);
    if (request == nullptr || value == nullptr) {
      return APP_CONTROL_ERROR_INVALID_PARAMETER;
    }
    edit(*request);
    return APP_CONTROL_ERROR_NONE;
  });
}

int Launch(const LaunchRequest& request) {
  Json::Value extra(Json::objectValue);
  for (const auto& entry : request.extra) {
    extra[entry.first] = entry.second;
  }
  return Connection::Get()
      .Call("app.launch", Request({{"app", request.app},
                                   {"operation", request.operation},
                                   {"extra", extra}}))["result"]
      .asInt();
}

}  // namespace

int app_control_create(app_control_h* app_control) {
  Call call("app_control_create");
  if (app_control == nullptr) {
    return call.Finish<int>(APP_CONTROL_ERROR_INVALID_PARAMETER);
  }
  *app_control = nullptr;
  return call.Run<int>(APP_CONTROL_ERROR_OUT_OF_MEMORY, [&]() -> int {
    *app_control = Requests().Add(std::make_shared<LaunchRequest>());
    call.Out(Number(*app_control));
    return APP_CONTROL_ERROR_NONE;
  });
}

int app_control_destroy(app_control_h app_control) {
  Call call("app_control_destroy", Number(app_control));
  return call.Run<int>(APP_CONTROL_ERROR_INVALID_PARAMETER, [&]() -> int {
    return Requests().Take(app_control) == nullptr ? APP_CONTROL_ERROR_INVALID_PARAMETER
                                                   : APP_CONTROL_ERROR_NONE;
  });
}

int app_control_set_app_id(app_control_h app_control, const char* app_id) {
  Call call("app_control_set_app_id", Number(app_control), app_id);
  return EditRequest(call, app_control, app_id,
                     [&](LaunchRequest& request) { request.app = app_id; });
}

int app_control_set_operation(app_control_h app_control, const char* operation) {
  Call call("app_control_set_operation", Number(app_control), operation);
  return EditRequest(call, app_control, operation,
                     [&](LaunchRequest& request) { request.operation = operation; });
}

int app_control_add_extra_data(app_control_h app_control, const char* key, const char* value) {
  Call call("app_control_add_extra_data", Number(app_control), key, value);
  return EditRequest(call, app_control, key == nullptr ? nullptr : value,
                     [&](LaunchRequest& request) { request.extra[key] = value; });
}

int app_control_send_launch_request(app_control_h app_control, app_control_reply_cb reply_cb,
                                    void* user_data) {
  Call call("app_control_send_launch_request", Number(app_control), reply_cb, user_data);
  return call.Run<int>(APP_CONTROL_ERROR_IO_ERROR, [&]() -> int {
    // Apps of a desk have no way to send a reply, so the callback has nothing to be called for.
    const auto request = Requests().Find(app_control);
    return request == nullptr ? APP_CONTROL_ERROR_INVALID_PARAMETER : Launch(*request);
  });
}
