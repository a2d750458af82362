// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_common.h>
#include <tzplatform_config.h>

#include <cstring>
#include <string>

#include "desk/client/call.h"
#include "desk/client/environment.h"

using desk::client::Call;
using desk::client::Environment;

namespace {

// From the environment alone: static initialisers of the daemon call before there is a bus.
const std::string& AppsDirectory() {
  static const std::string* const directory =
      new std::string(Environment::Get().prefix + "/opt/usr/apps");
  return *directory;
}

char* InOwnPackage(const char* directory) {
  const std::string& package = Environment::Get().package;
  if (package.empty()) {
    return nullptr;
  }
  return strdup((AppsDirectory() + "/" + package + directory).c_str());
}

}  // namespace

char* app_get_data_path(void) {
  Call call("app_get_data_path");
  return call.Run<char*>(nullptr, [] { return InOwnPackage("/data/"); });
}

char* app_get_shared_data_path(void) {
  Call call("app_get_shared_data_path");
  return call.Run<char*>(nullptr, [] { return InOwnPackage("/shared/data/"); });
}

const char* tzplatform_getenv(enum tzplatform_variable id) {
  Call call("tzplatform_getenv", id);
  return call.Run<const char*>(nullptr, [id]() -> const char* {
    const bool known = id == TZ_USER_APP || id == TZ_SYS_RW_APP;
    return known ? AppsDirectory().c_str() : nullptr;
  });
}
