// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/packages.h"

#include <app_info.h>
#include <app_manager.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>

#include "fake/packaged_apps.h"
#include "fake/platform_call.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct Manager {
  std::mutex mutex;
  package_manager_event_cb callback = nullptr;  // guarded by mutex
  void* data = nullptr;                         // guarded by mutex
};

struct State {
  std::mutex mutex;
  std::vector<Package> packages;  // guarded by mutex
  Handles<package_manager_h, Manager> managers{"package_manager"};
  Handles<package_info_h, Package> packageInfos{"package_info"};
  Handles<app_info_h, App> appInfos{"app_info"};
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

bool RemoveFrom(std::vector<Package>& packages, const std::string& id) {
  const auto end = std::remove_if(packages.begin(), packages.end(),
                                  [&](const Package& package) { return package.id == id; });
  const bool found = end != packages.end();
  packages.erase(end, packages.end());
  return found;
}

std::optional<Package> FindPackage(const std::string& id) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  for (const Package& package : state.packages) {
    if (package.id == id) {
      return package;
    }
  }
  return std::nullopt;
}

std::optional<App> FindApp(const std::string& id) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  for (const Package& package : state.packages) {
    for (const App& app : package.apps) {
      if (app.id == id) {
        return app;
      }
    }
  }
  return std::nullopt;
}

bool IsOfKind(const App& app, package_info_app_component_type_e kind) {
  return kind == PACKAGE_INFO_ALLAPP || kind == app.component;
}

}  // namespace

void AddPackage(const Package& package) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  RemoveFrom(state.packages, package.id);
  state.packages.push_back(package);
}

bool RemovePackage(const std::string& id) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return RemoveFrom(state.packages, id);
}

bool IsPackagedApp(const std::string& app) {
  return FindApp(app).has_value();
}

std::size_t FirePackageEvent(const std::string& package, package_manager_event_type_e type,
                             package_manager_event_state_e state, int progress,
                             package_manager_error_e error, const std::string& kind) {
  std::size_t called = 0;
  for (const auto& manager : GetState().managers.All()) {
    std::unique_lock<std::mutex> lock(manager->mutex);
    const auto callback = manager->callback;
    void* data = manager->data;
    lock.unlock();
    if (callback != nullptr) {
      callback(kind.c_str(), package.c_str(), type, state, progress, error, data);
      ++called;
    }
  }
  return called;
}

std::size_t PackageEventCallbacks() {
  std::size_t callbacks = 0;
  for (const auto& manager : GetState().managers.All()) {
    const std::lock_guard<std::mutex> lock(manager->mutex);
    callbacks += manager->callback == nullptr ? 0 : 1;
  }
  return callbacks;
}

void ResetPackages() {
  State& state = GetState();
  state.managers.Clear();
  state.packageInfos.Clear();
  state.appInfos.Clear();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.packages.clear();
}

}  // namespace fake

using fake::FAILURE;
using fake::GetState;
using fake::PlatformCall;

int package_manager_create(package_manager_h* manager) {
  PlatformCall call("package_manager_create");
  return call.Run(FAILURE, [&]() -> int {
    *manager = GetState().managers.Add(std::make_shared<fake::Manager>());
    return 0;
  });
}

int package_manager_destroy(package_manager_h manager) {
  PlatformCall call("package_manager_destroy", GetState().managers.Describe(manager));
  return call.Run(FAILURE, [&]() -> int {
    const bool known = GetState().managers.Take(manager) != nullptr;
    return known ? 0 : static_cast<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER);
  });
}

namespace {

int SetCallback(package_manager_h manager, package_manager_event_cb callback, void* data) {
  const auto object = GetState().managers.Find(manager);
  if (!object) {
    return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
  }
  const std::lock_guard<std::mutex> lock(object->mutex);
  object->callback = callback;
  object->data = data;
  return PACKAGE_MANAGER_ERROR_NONE;
}

}  // namespace

int package_manager_set_event_cb(package_manager_h manager, package_manager_event_cb callback,
                                 void* user_data) {
  PlatformCall call("package_manager_set_event_cb", GetState().managers.Describe(manager), callback,
                    user_data);
  return call.Run(FAILURE, [&]() -> int {
    if (callback == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    return SetCallback(manager, callback, user_data);
  });
}

int package_manager_unset_event_cb(package_manager_h manager) {
  PlatformCall call("package_manager_unset_event_cb", GetState().managers.Describe(manager));
  return call.Run(FAILURE, [&]() -> int { return SetCallback(manager, nullptr, nullptr); });
}

int package_manager_get_package_info(const char* package, package_info_h* package_info) {
  PlatformCall call("package_manager_get_package_info", package);
  return call.Run(FAILURE, [&]() -> int {
    if (package == nullptr || package_info == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    const auto found = fake::FindPackage(package);
    if (!found) {
      return PACKAGE_MANAGER_ERROR_NO_SUCH_PACKAGE;
    }
    *package_info = GetState().packageInfos.Add(std::make_shared<fake::Package>(*found));
    return 0;
  });
}

int package_info_foreach_app_from_package(package_info_h package_info,
                                          package_info_app_component_type_e comp_type,
                                          package_info_app_cb callback, void* user_data) {
  PlatformCall call("package_info_foreach_app_from_package",
                    GetState().packageInfos.Describe(package_info), comp_type, callback, user_data);
  return call.Run(FAILURE, [&]() -> int {
    const auto package = GetState().packageInfos.Find(package_info);
    if (!package || callback == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    for (const fake::App& app : package->apps) {
      if (fake::IsOfKind(app, comp_type) && !callback(app.component, app.id.c_str(), user_data)) {
        break;
      }
    }
    return 0;
  });
}

int package_info_get_version(package_info_h package_info, char** version) {
  PlatformCall call("package_info_get_version", GetState().packageInfos.Describe(package_info));
  return call.Run(FAILURE, [&]() -> int {
    const auto package = GetState().packageInfos.Find(package_info);
    if (!package || version == nullptr) {
      return PACKAGE_MANAGER_ERROR_INVALID_PARAMETER;
    }
    *version = strdup(package->version.c_str());
    return 0;
  });
}

int package_info_destroy(package_info_h package_info) {
  PlatformCall call("package_info_destroy", GetState().packageInfos.Describe(package_info));
  return call.Run(FAILURE, [&]() -> int {
    const bool known = GetState().packageInfos.Take(package_info) != nullptr;
    return known ? 0 : static_cast<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER);
  });
}

int app_info_create(const char* app_id, app_info_h* app_info) {
  PlatformCall call("app_info_create", app_id);
  return call.Run(FAILURE, [&]() -> int {
    if (app_id == nullptr || app_info == nullptr) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    const auto found = fake::FindApp(app_id);
    if (!found) {
      return APP_MANAGER_ERROR_NO_SUCH_APP;
    }
    *app_info = GetState().appInfos.Add(std::make_shared<fake::App>(*found));
    return 0;
  });
}

int app_info_destroy(app_info_h app_info) {
  PlatformCall call("app_info_destroy", GetState().appInfos.Describe(app_info));
  return call.Run(FAILURE, [&]() -> int {
    const bool known = GetState().appInfos.Take(app_info) != nullptr;
    return known ? 0 : static_cast<int>(APP_MANAGER_ERROR_INVALID_PARAMETER);
  });
}

int app_info_foreach_metadata(app_info_h app_info, app_info_metadata_cb callback, void* user_data) {
  PlatformCall call("app_info_foreach_metadata", GetState().appInfos.Describe(app_info), callback,
                    user_data);
  return call.Run(FAILURE, [&]() -> int {
    const auto app = GetState().appInfos.Find(app_info);
    if (!app || callback == nullptr) {
      return APP_MANAGER_ERROR_INVALID_PARAMETER;
    }
    for (const auto& [key, value] : app->metadata) {
      if (!callback(key.c_str(), value.c_str(), user_data)) {
        break;
      }
    }
    return 0;
  });
}
