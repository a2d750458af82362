// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vconf.h>

#include <string>
#include <utility>

/// Keeps one web app ready in the background: launches it, follows its life through the settings
/// key that the web runtime writes, launches it again when the low-memory killer took it, and tells
/// the app types that asked what state it is in.
///
/// All state belongs to the process, and one app is followed at a time: a call for another app
/// drops the callbacks of the one before. Add and remove run on the caller's thread under a lock.
/// The settings-key callback and the timers run on the main-loop thread and take none: they read
/// the followed app's id and the callbacks while another thread may be changing them.
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
/// The function may be null: its owner hears nothing then. It is called on the main-loop thread,
/// without any lock, and may add or remove callbacks.
using WebAppStatusCallback = std::pair<WebAppStatusFunction, void*>;

/// Launches the app in the background unless it is up already, and follows it. True also for a
/// launch that the system rejected for the moment: it is tried again every five seconds. False when
/// the app cannot be launched or its settings key cannot be subscribed to.
bool PreloadAppAndRegisterAppStatusChangedCB(const std::string& rAppID, const std::string& rAppType,
                                             const WebAppStatusCallback& rCallback);

/// One callback per app type: a second one replaces the first. Takes the lock.
void AddWebStatusChangedCallback(const std::string& rAppID, const std::string& rAppType,
                                 const WebAppStatusCallback& rCallback);
/// Ends the following of the app with the last callback. Takes the lock.
void RemoveWebStatusChangedCallback(const std::string& rAppID, const std::string& rAppType);

/// True when the key's changes are told, also when it was the key of another app that had been
/// subscribed to before.
bool RegisterAppStatusVconfCallback(const std::string& rAppID);
void UnregisterAppStatusVconfCallback(const std::string& rAppID);

/// Settings-key callback and GLib timers, on the main-loop thread; no exception leaves them. A
/// timer goes on as long as it returns non-zero.
void WebAppStatusChangedCallback(keynode_t* pNode, void* pUserData);
int LMKCheckingTimerCallback(void* pUserData);
int PreloadingTimerCBFunc(void* pUserData);

/// Calls every callback with the present status, in the order of the types' names.
void NotifyWebAppStatus();

}  // namespace AppPreloadingUtils
