// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

/// Package id to whether the web-app service marks the app as gone.
using WASAppList = std::map<std::string, bool>;

/// Queries of the web-app service. Stateless, callable from any thread.
namespace WASUtils {

/// Adds the installed web apps; an id that is already in rAppList keeps its value. On false,
/// rAppList is unchanged.
bool GetAllWASAppList(WASAppList& rAppList);

/// Empty when the service does not know the app yet.
std::string GetWidgetIDByAppID(const std::string& rAppID);

}  // namespace WASUtils
