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

#include "fake/handles.h"
#include "fake/packaged_apps.h"
#include "fake/recorder.h"
#include "fake/resets.h"

struct package_manager_s {
  unsigned long number = 0;
  std::mutex mutex;
  package_manager_event_cb callback = nullptr;  // guarded by mutex
  void* data = nullptr;                         // guarded by mutex
};

struct package_info_s {
  unsigned long number = 0;
  fake::Package package;
};

struct app_info_s {
  unsigned long number = 0;
  fake::App app;
};

namespace fake {
namespace {

struct State {
  std::mutex mutex;
  std::vector<Package> packages;  // guarded by mutex
  Handles<package_manager_s> managers{"package_manager"};
  Handles<package_info_s> packageInfos{"package_info"};
  Handles<app_info_s> appInfos{"app_info"};
};

State& GetState() {
  static auto* s_state = new State;
  return *s_state;
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
  GetState().managers.ForEach([&](package_manager_s& manager) {
    std::unique_lock<std::mutex> lock(manager.mutex);
    const auto callback = manager.callback;
    void* data = manager.data;
    lock.unlock();
    if (callback != nullptr) {
      callback(kind.c_str(), package.c_str(), type, state, progress, error, data);
      ++called;
    }
  });
  return called;
}

std::size_t PackageEventCallbacks() {
  std::size_t callbacks = 0;
  GetState().managers.ForEach([&](package_manager_s& manager) {
    const std::lock_guard<std::mutex> lock(manager.mutex);
    callbacks += manager.callback == nullptr ? 0 : 1;
  });
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

using fake::GetState;
using fake::Presence;
using fake::Recorder;

int package_manager_create(package_manager_h* manager) {
  Recorder call("package_manager_create");
  if (call.Fails()) {
    return call.ReturnFault();
  }
  *manager = GetState().managers.Add(std::make_shared<package_manager_s>());
  return call.Return(0);
}

int package_manager_destroy(package_manager_h manager) {
  Recorder call("package_manager_destroy", GetState().managers.TextOf(manager));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const bool known = GetState().managers.Remove(manager);
  return call.Return(known ? 0 : static_cast<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER));
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
  Recorder call("package_manager_set_event_cb", GetState().managers.TextOf(manager),
                Presence(callback), Presence(user_data));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  if (callback == nullptr) {
    return call.Return(static_cast<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER));
  }
  return call.Return(SetCallback(manager, callback, user_data));
}

int package_manager_unset_event_cb(package_manager_h manager) {
  Recorder call("package_manager_unset_event_cb", GetState().managers.TextOf(manager));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  return call.Return(SetCallback(manager, nullptr, nullptr));
}

int package_manager_get_package_info(const char* package, package_info_h* package_info) {
  Recorder call("package_manager_get_package_info", package);
  if (call.Fails()) {
    return call.ReturnFault();
  }
  if (package == nullptr || package_info == nullptr) {
    return call.Return(static_cast<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER));
  }
  const auto found = fake::FindPackage(package);
  if (!found) {
    return call.Return(static_cast<int>(PACKAGE_MANAGER_ERROR_NO_SUCH_PACKAGE));
  }
  auto object = std::make_shared<package_info_s>();
  object->package = *found;
  *package_info = GetState().packageInfos.Add(object);
  return call.Return(0);
}

int package_info_foreach_app_from_package(package_info_h package_info,
                                          package_info_app_component_type_e comp_type,
                                          package_info_app_cb callback, void* user_data) {
  Recorder call("package_info_foreach_app_from_package",
                GetState().packageInfos.TextOf(package_info), static_cast<int>(comp_type),
                Presence(callback), Presence(user_data));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const auto object = GetState().packageInfos.Find(package_info);
  if (!object || callback == nullptr) {
    return call.Return(static_cast<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER));
  }
  for (const fake::App& app : object->package.apps) {
    if (fake::IsOfKind(app, comp_type) && !callback(app.component, app.id.c_str(), user_data)) {
      break;
    }
  }
  return call.Return(0);
}

int package_info_get_version(package_info_h package_info, char** version) {
  Recorder call("package_info_get_version", GetState().packageInfos.TextOf(package_info));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const auto object = GetState().packageInfos.Find(package_info);
  if (!object || version == nullptr) {
    return call.Return(static_cast<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER));
  }
  *version = strdup(object->package.version.c_str());
  return call.Return(0);
}

int package_info_destroy(package_info_h package_info) {
  Recorder call("package_info_destroy", GetState().packageInfos.TextOf(package_info));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const bool known = GetState().packageInfos.Remove(package_info);
  return call.Return(known ? 0 : static_cast<int>(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER));
}

int app_info_create(const char* app_id, app_info_h* app_info) {
  Recorder call("app_info_create", app_id);
  if (call.Fails()) {
    return call.ReturnFault();
  }
  if (app_id == nullptr || app_info == nullptr) {
    return call.Return(static_cast<int>(APP_MANAGER_ERROR_INVALID_PARAMETER));
  }
  const auto found = fake::FindApp(app_id);
  if (!found) {
    return call.Return(static_cast<int>(APP_MANAGER_ERROR_NO_SUCH_APP));
  }
  auto object = std::make_shared<app_info_s>();
  object->app = *found;
  *app_info = GetState().appInfos.Add(object);
  return call.Return(0);
}

int app_info_destroy(app_info_h app_info) {
  Recorder call("app_info_destroy", GetState().appInfos.TextOf(app_info));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const bool known = GetState().appInfos.Remove(app_info);
  return call.Return(known ? 0 : static_cast<int>(APP_MANAGER_ERROR_INVALID_PARAMETER));
}

int app_info_foreach_metadata(app_info_h app_info, app_info_metadata_cb callback, void* user_data) {
  Recorder call("app_info_foreach_metadata", GetState().appInfos.TextOf(app_info),
                Presence(callback), Presence(user_data));
  if (call.Fails()) {
    return call.ReturnFault();
  }
  const auto object = GetState().appInfos.Find(app_info);
  if (!object || callback == nullptr) {
    return call.Return(static_cast<int>(APP_MANAGER_ERROR_INVALID_PARAMETER));
  }
  for (const auto& [key, value] : object->app.metadata) {
    if (!callback(key.c_str(), value.c_str(), user_data)) {
      break;
    }
  }
  return call.Return(0);
}
