// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_info.h>
#include <app_manager.h>

#include <string>
#include <utility>
#include <vector>

#include "call/handle_table.h"
#include "desk/client/call.h"
#include "desk/client/connection.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;

namespace {

// A snapshot of the metadata, taken with the handle, in the order of the manifest.
using Metadata = std::vector<std::pair<std::string, std::string>>;

platform::HandleTable<app_info_h, Metadata>& Infos() {
  static auto* const infos = new platform::HandleTable<app_info_h, Metadata>("app_info");
  return *infos;
}

int Create(const char* id, app_info_h* info) {
  const Json::Value reply = Connection::Get().Call("app.info", Request({{"app", id}}));
  if (!reply["found"].asBool()) {
    return APP_MANAGER_ERROR_NO_SUCH_APP;
  }
  auto metadata = std::make_shared<Metadata>();
  for (const Json::Value& entry : reply["metadata"]) {
    metadata->emplace_back(entry["key"].asString(), entry["value"].asString());
  }
  *info = Infos().Add(std::move(metadata));
  return APP_MANAGER_ERROR_NONE;
}

int Walk(app_info_h info, app_info_metadata_cb callback, void* userData) {
  const auto metadata = Infos().Find(info);
  if (metadata == nullptr || callback == nullptr) {
    return APP_MANAGER_ERROR_INVALID_PARAMETER;
  }
  for (const auto& entry : *metadata) {
    if (!callback(entry.first.c_str(), entry.second.c_str(), userData)) {
      break;
    }
  }
  return APP_MANAGER_ERROR_NONE;
}

}  // namespace

int app_info_create(const char* app_id, app_info_h* app_info) {
  Call call("app_info_create", app_id);
  return call.Run<int>(APP_MANAGER_ERROR_IO_ERROR, [&]() -> int {
    if (app_id == nullptr || app_info == nullptr) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    const int result = Create(app_id, app_info);
    if (result == APP_MANAGER_ERROR_NONE) {
      call.AddOutput(Infos().Describe(*app_info));
    }
    return result;
  });
}

int app_info_destroy(app_info_h app_info) {
  Call call("app_info_destroy", Infos().Describe(app_info));
  return call.Run<int>(APP_MANAGER_ERROR_INVALID_PARAMETER, [&]() -> int {
    return Infos().Take(app_info) == nullptr ? APP_MANAGER_ERROR_INVALID_PARAMETER
                                             : APP_MANAGER_ERROR_NONE;
  });
}

int app_info_foreach_metadata(app_info_h app_info, app_info_metadata_cb callback, void* user_data) {
  Call call("app_info_foreach_metadata", Infos().Describe(app_info), callback, user_data);
  return call.Run<int>(APP_MANAGER_ERROR_IO_ERROR,
                       [&] { return Walk(app_info, callback, user_data); });
}
