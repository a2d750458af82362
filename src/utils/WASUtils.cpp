// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/WASUtils.h"

#include <was_db.h>

#include <cstdlib>
#include <memory>

#include "common/Log.h"

namespace {

constexpr int WAS_KIND_WEB_APP = 2;

struct Free {
  void operator()(void* pMemory) const { std::free(pMemory); }
};

}  // namespace

bool WASUtils::GetAllWASAppList(WASAppList& rAppList) {
  was_app_list_item_s* pItems = nullptr;
  int count = 0;
  if (was_get_all_app_list(&pItems, &count) != 0) {
    ORV_LOG_ERROR("[ERROR] was_get_all_app_list failed.");
    return false;
  }
  const std::unique_ptr<was_app_list_item_s, Free> owner(pItems);
  for (int i = 0; i < count; ++i) {
    if (pItems[i].kind != WAS_KIND_WEB_APP) {
      continue;
    }
    rAppList.emplace(pItems[i].package_id, pItems[i].gone != 0);
  }
  return true;
}

std::string WASUtils::GetWidgetIDByAppID(const std::string& rAppID) {
  was_app_info_s info = {};
  if (was_get_app_info_by_tizenid(rAppID.c_str(), &info) != 0) {
    ORV_LOG_DEBUG("[Debug] was_get_app_info_by_tizenid() failed.");
    return std::string();
  }
  ORV_LOG_INFO("[Info] WidgetID : %s, app_tizen_id : %s", info.widget_id, info.app_tizen_id);
  return info.widget_id;
}
