// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <package_manager.h>

#include <cstring>
#include <string>
#include <vector>

#include "call/handle_table.h"
#include "desk/client/call.h"
#include "desk/client/connection.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;

namespace {

struct App {
  std::string id;
  package_info_app_component_type_e component;
};

// A snapshot of the package, taken with the handle; the apps are in the order of the manifest.
struct Package {
  std::string version;
  std::vector<App> apps;
};

platform::HandleTable<package_info_h, Package>& Packages() {
  static auto* const packages = new platform::HandleTable<package_info_h, Package>("package_info");
  return *packages;
}

int TakeSnapshot(const char* id, package_info_h* info) {
  const Json::Value reply = Connection::Get().Call("pkg.info", Request({{"package", id}}));
  if (!reply["found"].asBool()) {
    return PACKAGE_MANAGER_ERROR_NO_SUCH_PACKAGE;
  }
  auto package = std::make_shared<Package>();
  package->version = reply["version"].asString();
  for (const Json::Value& app : reply["apps"]) {
    const bool service = app["component"].asString() == "service";
    package->apps.push_back(
        {app["id"].asString(), service ? PACKAGE_INFO_SERVICEAPP : PACKAGE_INFO_UIAPP});
  }
  *info = Packages().Add(std::move(package));
  return PACKAGE_MANAGER_ERROR_NONE;
}

int Walk(package_info_h info, package_info_app_component_type_e component,
         package_info_app_cb callback, void* userData) {
  const auto package = Packages().Find(info);
  if (package == nullptr || callback == nullptr) {
    return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
  }
  for (const App& app : package->apps) {
    const bool wanted = component == PACKAGE_INFO_ALLAPP || component == app.component;
    if (wanted && !callback(app.component, app.id.c_str(), userData)) {
      break;
    }
  }
  return PACKAGE_MANAGER_ERROR_NONE;
}

}  // namespace

int package_manager_get_package_info(const char* package, package_info_h* package_info) {
  Call call("package_manager_get_package_info", package);
  return call.Run<int>(PACKAGE_MANAGER_ERROR_IO_ERROR, [&]() -> int {
    if (package == nullptr || package_info == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    const int result = TakeSnapshot(package, package_info);
    if (result == PACKAGE_MANAGER_ERROR_NONE) {
      call.AddOutput(Packages().Describe(*package_info));
    }
    return result;
  });
}

int package_info_foreach_app_from_package(package_info_h package_info,
                                          package_info_app_component_type_e comp_type,
                                          package_info_app_cb callback, void* user_data) {
  Call call("package_info_foreach_app_from_package", Packages().Describe(package_info), comp_type,
            callback, user_data);
  return call.Run<int>(PACKAGE_MANAGER_ERROR_IO_ERROR,
                       [&] { return Walk(package_info, comp_type, callback, user_data); });
}

int package_info_get_version(package_info_h package_info, char** version) {
  Call call("package_info_get_version", Packages().Describe(package_info));
  return call.Run<int>(PACKAGE_MANAGER_ERROR_IO_ERROR, [&]() -> int {
    const auto package = Packages().Find(package_info);
    if (package == nullptr || version == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    *version = strdup(package->version.c_str());
    call.AddOutput(*version);
    return PACKAGE_MANAGER_ERROR_NONE;
  });
}

int package_info_destroy(package_info_h package_info) {
  Call call("package_info_destroy", Packages().Describe(package_info));
  return call.Run<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER, [&]() -> int {
    return Packages().Take(package_info) == nullptr ? PACKAGE_MANAGER_ERROR_INVALID_PARAMETER
                                                    : PACKAGE_MANAGER_ERROR_NONE;
  });
}
