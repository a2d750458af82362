// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "app_info/app_type/CustomUIAnnouncement.h"

#include <vconf.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "common/JsonText.h"
#include "common/Log.h"
#include "common/ORVConstants.h"

namespace CustomUIAnnouncement {

Json::Value MakeAppInfo(const std::string& rPackageID, const std::string& rAppID,
                        const std::string& rWidgetID,
                        const std::map<std::string, std::string>& rData) {
  const auto it = rData.find(DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT);
  Json::Value appInfo;
  appInfo["pkg_id"] = rPackageID;
  appInfo["app_id"] = rAppID;
  appInfo["widget_id"] = rWidgetID;
  appInfo["cold_boot_opt"] =
      it == rData.end() || it->second.empty() ? CUSTOM_UI_DEFAULT : it->second;
  return appInfo;
}

bool WriteAppInfoVconfKey(const std::string& rMember, const Json::Value& rAppInfo, bool bClear) {
  const std::unique_ptr<char, decltype(&std::free)> pText(
      vconf_get_str(VCONFKEY_CUSTOM_UI_TYPE.c_str()), &std::free);
  ORV_LOG_DEBUG("[Debug] str = %s", pText ? pText.get() : "(null)");
  // Intentional: docs/behaviour.md, "Without the key an exception leaves the run".
  if (!pText) {
    throw std::logic_error("basic_string: construction from null is not valid");
  }
  try {
    const std::string sText = pText.get();
    Json::Value root;
    if (!sText.empty() && !JsonText::Parse(sText, root)) {
      ORV_LOG_DEBUG("[Debug] Invalid Json Str : %s", sText.c_str());
      return false;
    }
    if (bClear) {
      root[rMember].clear();  // null when the member did not exist
    } else {
      root[rMember] = rAppInfo;
    }
    vconf_set_str(VCONFKEY_CUSTOM_UI_TYPE.c_str(), JsonText::Write(root).c_str());
    return true;
  } catch (...) {  // whatever the JSON of other programs raises, the key stays as it is
    ORV_LOG_ERROR("[ERROR] Exception Caught");
    return false;
  }
}

}  // namespace CustomUIAnnouncement
