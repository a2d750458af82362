// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_common.h>
#include <tzplatform_config.h>

#include <cstring>

#include "fake/platform_call.h"

namespace {

char* CopyOf(const char* function, const char* path) {
  fake::PlatformCall call(function);
  return call.Run<char*>(nullptr, [path] { return strdup(path); });
}

}  // namespace

char* app_get_data_path(void) {
  return CopyOf("app_get_data_path", "/opt/usr/apps/com.kalmora.tv.orv-enabler/data/");
}

char* app_get_shared_data_path(void) {
  return CopyOf("app_get_shared_data_path",
                "/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data/");
}

const char* tzplatform_getenv(enum tzplatform_variable id) {
  fake::PlatformCall call("tzplatform_getenv", id);
  return call.Run<const char*>(nullptr, [id] {
    const bool known = id == TZ_USER_APP || id == TZ_SYS_RW_APP;
    return known ? "/opt/usr/apps" : nullptr;
  });
}
