// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_control.h>

#include <map>
#include <mutex>
#include <string>

#include "call/handle_table.h"
#include "desk/client/call.h"
#include "desk/client/connection.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;

namespace {

// Needs no lock: app_control.h allows one owner at a time.
struct LaunchRequest {
  std::string app;
  std::string operation;
  std::map<std::string, std::string> extra;
};

platform::HandleTable<app_control_h, LaunchRequest>& Requests() {
  static auto* const requests =
      new platform::HandleTable<app_control_h, LaunchRequest>("app_control");
  return *requests;
}

// Edits the request; fails for an unknown handle or a null value.
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
    return call.Return<int>(APP_CONTROL_ERROR_INVALID_PARAMETER);
  }
  *app_control = nullptr;
  return call.Run<int>(APP_CONTROL_ERROR_OUT_OF_MEMORY, [&]() -> int {
    *app_control = Requests().Add(std::make_shared<LaunchRequest>());
    call.AddOutput(Requests().Describe(*app_control));
    return APP_CONTROL_ERROR_NONE;
  });
}

int app_control_destroy(app_control_h app_control) {
  Call call("app_control_destroy", Requests().Describe(app_control));
  return call.Run<int>(APP_CONTROL_ERROR_INVALID_PARAMETER, [&]() -> int {
    return Requests().Take(app_control) == nullptr ? APP_CONTROL_ERROR_INVALID_PARAMETER
                                                   : APP_CONTROL_ERROR_NONE;
  });
}

int app_control_set_app_id(app_control_h app_control, const char* app_id) {
  Call call("app_control_set_app_id", Requests().Describe(app_control), app_id);
  return EditRequest(call, app_control, app_id,
                     [&](LaunchRequest& request) { request.app = app_id; });
}

int app_control_set_operation(app_control_h app_control, const char* operation) {
  Call call("app_control_set_operation", Requests().Describe(app_control), operation);
  return EditRequest(call, app_control, operation,
                     [&](LaunchRequest& request) { request.operation = operation; });
}

int app_control_add_extra_data(app_control_h app_control, const char* key, const char* value) {
  Call call("app_control_add_extra_data", Requests().Describe(app_control), key, value);
  return EditRequest(call, app_control, key == nullptr ? nullptr : value,
                     [&](LaunchRequest& request) { request.extra[key] = value; });
}

int app_control_send_launch_request(app_control_h app_control, app_control_reply_cb reply_cb,
                                    void* user_data) {
  Call call("app_control_send_launch_request", Requests().Describe(app_control), reply_cb,
            user_data);
  return call.Run<int>(APP_CONTROL_ERROR_IO_ERROR, [&]() -> int {
    // Apps of a desk cannot send a reply, so the callback is never called.
    const auto request = Requests().Find(app_control);
    return request == nullptr ? APP_CONTROL_ERROR_INVALID_PARAMETER : Launch(*request);
  });
}
