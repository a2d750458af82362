// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vconf.h>

#include <string>
#include <utility>

/// Keeps one web app ready in the background: launches it, follows its state through the settings
/// key that the web runtime writes, launches it again after the low-memory killer ended it, and
/// notifies the app types that registered a callback.
///
/// All state is process-wide, and one app is followed at a time: a call for another app drops the
/// callbacks of the previous one. Any thread may call. Add and remove run one at a time, under a
/// lock that they hold across their platform calls. The settings-key callback and the timers run on
/// the main-loop thread without that lock; they work on copies of the followed app's id and of the
/// callbacks. A callback that is removed on another thread may still be called once.
namespace AppPreloadingUtils {

/// The words of the settings key, in the order of their numbers.
enum WebAppStatus {
  WEB_APP_STATUS_INVALID = -1,
  WEB_APP_STATUS_INIT = 0,
  WEB_APP_STATUS_LOAD = 1,
  WEB_APP_STATUS_PRELOAD = 2,
  WEB_APP_STATUS_RESUME = 3,
  WEB_APP_STATUS_PAUSE = 4,
  WEB_APP_STATUS_DESTROY = 5,
  WEB_APP_STATUS_QUIT = 6
};

using WebAppStatusFunction = void (*)(int eStatus, void* pUserData);
/// The function may be null: it is skipped. It is called on the main-loop thread, without any lock,
/// and may add or remove callbacks.
using WebAppStatusCallback = std::pair<WebAppStatusFunction, void*>;

/// Launches the app in the background unless it is already up, and follows it. A launch that the
/// system rejects is repeated every five seconds and counts as a success. False when the app cannot
/// be launched or its settings key cannot be subscribed to.
bool PreloadAppAndRegisterAppStatusChangedCB(const std::string& rAppID, const std::string& rAppType,
                                             const WebAppStatusCallback& rCallback);

/// One callback per app type: a second one replaces the first. Takes the lock.
void AddWebStatusChangedCallback(const std::string& rAppID, const std::string& rAppType,
                                 const WebAppStatusCallback& rCallback);
/// The removal of the last callback ends the following of the app. Takes the lock.
void RemoveWebStatusChangedCallback(const std::string& rAppID, const std::string& rAppType);

/// True when there is a subscription, even if it is to the key of an app that was followed before.
bool RegisterAppStatusVconfCallback(const std::string& rAppID);
void UnregisterAppStatusVconfCallback(const std::string& rAppID);

/// Settings-key callback and GLib timers, on the main-loop thread; no exception leaves them. A
/// timer repeats as long as it returns non-zero.
void WebAppStatusChangedCallback(keynode_t* pNode, void* pUserData);
int LMKCheckingTimerCallback(void* pUserData);
int PreloadingTimerCBFunc(void* pUserData);

/// Calls every callback with the current status, in ascending order of the app types.
void NotifyWebAppStatus();

}  // namespace AppPreloadingUtils
