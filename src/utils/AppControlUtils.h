// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

/// Launching apps and choosing the app that serves an app operation.
///
/// All functions are synchronous, make one attempt and may be called from any thread. A failure is
/// logged here with the text of the platform's error code; for an unknown code the text is empty.
namespace AppControlUtils {

/// True when the launcher accepted the request. That does not mean that the app is up.
bool LaunchApp(const std::string& rAppID, const std::string& rOperation);

/// Launches with extra data, passed in key order. Returns the app_control code, 0 on success:
/// callers distinguish a rejected launch from a failed one.
int LaunchApp(const std::string& rAppID, const std::string& rOperation,
              const std::map<std::string, std::string>& rExtraData);

/// Launches a web app in the background. Returns the app_control code; the caller decides whether
/// to retry.
int PreloadWebApp(const std::string& rAppID);

/// Makes the app the current one of the operation (bEnable), or gives the operation back to the
/// platform if the app is the current one. A call without anything to change is a success. A
/// current app that cannot be read counts as the empty id.
bool SetCurrentAppOfAppOperation(const std::string& rOperation, const std::string& rAppID,
                                 bool bEnable);

/// Empty when the operation has no current app or the platform reports an error.
std::string GetCurrentAppIDOfAppOperation(const std::string& rOperation);

}  // namespace AppControlUtils
