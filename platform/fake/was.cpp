// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/was.h"

#include <was_db.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

#include "fake/platform_call.h"
#include "fake/resets.h"
#include "framework/fixed_text.h"

namespace fake {
namespace {

struct State {
  std::mutex mutex;
  std::vector<WasApp> apps;  // guarded by mutex
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

was_app_list_item_s* NewList(const std::vector<WasApp>& apps) {
  void* memory = std::calloc(apps.size(), sizeof(was_app_list_item_s));
  auto* list = static_cast<was_app_list_item_s*>(memory);
  for (std::size_t i = 0; i < apps.size(); ++i) {
    framework::FillText(list[i].package_id, apps[i].package);
    list[i].kind = apps[i].kind;
    list[i].gone = apps[i].gone;
  }
  return list;
}

std::vector<WasApp> AllApps() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.apps;
}

}  // namespace

void AddWasApp(const WasApp& app) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.apps.push_back(app);
}

void RemoveWasPackage(const std::string& package) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto end = std::remove_if(state.apps.begin(), state.apps.end(),
                                  [&](const WasApp& app) { return app.package == package; });
  state.apps.erase(end, state.apps.end());
}

void ResetWas() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.apps.clear();
}

}  // namespace fake

int was_get_all_app_list(was_app_list_item_s** list, int* count) {
  fake::PlatformCall call("was_get_all_app_list");
  return call.Run(fake::FAILURE, [&]() -> int {
    const auto apps = fake::AllApps();
    *list = apps.empty() ? nullptr : fake::NewList(apps);
    *count = static_cast<int>(apps.size());
    return 0;
  });
}

int was_get_app_info_by_tizenid(const char* app_tizen_id, was_app_info_s* info) {
  fake::PlatformCall call("was_get_app_info_by_tizenid", app_tizen_id);
  return call.Run(fake::FAILURE, [&]() -> int {
    for (const fake::WasApp& app : fake::AllApps()) {
      if (app_tizen_id != nullptr && app.app == app_tizen_id) {
        std::memset(info, 0, sizeof(*info));
        framework::FillText(info->widget_id, app.widget);
        framework::FillText(info->app_tizen_id, app.app);
        return 0;
      }
    }
    return -1;
  });
}
