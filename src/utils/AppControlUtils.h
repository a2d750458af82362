// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

/// Launching apps and choosing the app that serves an app operation.
///
/// All functions are synchronous, make one attempt and may be called from any thread. A failure is
/// logged here, with the text of the platform's error code; a code without a text is logged with an
/// empty one.
namespace AppControlUtils {

/// True when the launcher accepted the request. That does not mean that the app is up.
bool LaunchApp(const std::string& rAppID, const std::string& rOperation);

/// As above with extra data, which is handed over in key order. The result is the app_control code
/// and 0 on success: callers tell a rejected launch from a failed one.
int LaunchApp(const std::string& rAppID, const std::string& rOperation,
              const std::map<std::string, std::string>& rExtraData);

/// Launches a web app in the background. The result is the app_control code; it is the caller who
/// decides whether to try again.
int PreloadWebApp(const std::string& rAppID);

/// Makes the app serve the operation, or gives the operation back to the platform. An app never
/// takes away another app's place, and a call that has nothing to change is a success. When the
/// present app cannot be read it counts as the empty id.
bool SetCurrentAppOfAppOperation(const std::string& rOperation, const std::string& rAppID,
                                 bool bEnable);

/// Empty when nobody serves the operation or the platform refused to tell.
std::string GetCurrentAppIDOfAppOperation(const std::string& rOperation);

}  // namespace AppControlUtils
