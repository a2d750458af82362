// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

/// Package id to whether the web-app service holds the app as gone.
using WASAppList = std::map<std::string, bool>;

/// Questions to the web-app service. Stateless, callable from any thread.
namespace WASUtils {

/// Adds the installed web apps; an id that rAppList already has keeps its value. False leaves
/// rAppList alone.
bool GetAllWASAppList(WASAppList& rAppList);

/// Empty when the service does not know the app (yet).
std::string GetWidgetIDByAppID(const std::string& rAppID);

}  // namespace WASUtils
