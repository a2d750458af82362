// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/AppPreloadingUtils.h"

#include <app_control.h>
#include <glib.h>

#include <atomic>
#include <exception>
#include <map>
#include <mutex>
#include <optional>

#include "common/Log.h"
#include "common/ORVConstants.h"
#include "utils/AppControlUtils.h"

namespace AppPreloadingUtils {

namespace {

constexpr guint LMK_CHECK_PERIOD_SECONDS = 2;
constexpr int LMK_CHECK_MAX_COUNT = 20;
constexpr guint PRELOAD_RETRY_PERIOD_SECONDS = 5;
constexpr int PRELOAD_RETRY_MAX_COUNT = 20;

const std::map<std::string, int> s_mapWebAppStatus = {
    {"init", WEB_APP_STATUS_INIT},       {"load", WEB_APP_STATUS_LOAD},
    {"preload", WEB_APP_STATUS_PRELOAD}, {"resume", WEB_APP_STATUS_RESUME},
    {"pause", WEB_APP_STATUS_PAUSE},     {"destroy", WEB_APP_STATUS_DESTROY},
    {"quit", WEB_APP_STATUS_QUIT}};

// Serialises add and remove, platform calls included.
std::mutex m_mutexWebStatusCallbacks;

// Leaf: held for accesses to these two only, never across a call or another lock. Calls are given
// copies.
std::mutex m_mutexFollowedApp;
std::string m_sPreloadingAppID;
std::map<std::string, WebAppStatusCallback> m_mapWebStatusCallbacks;

// Independent of each other; no lock guards more than one of them.
std::atomic<int> m_iCurrentWebAppStatus{WEB_APP_STATUS_INVALID};
std::atomic<bool> m_bAppStatusVconfRegistered{false};
std::atomic<guint> m_uLMKTimerID{0};
std::atomic<int> m_iLMKCheckingCount{0};
std::atomic<guint> m_uPreloadingTimerID{0};
std::atomic<int> m_iPreloadingCount{0};

std::string GetStatusKey(const std::string& rAppID) {
  return WEB_APP_STATUS_KEY_PREFIX + rAppID;
}

std::string GetPreloadingAppID() {
  const std::lock_guard<std::mutex> lock(m_mutexFollowedApp);
  return m_sPreloadingAppID;
}

/// The first callback, or the one behind rAppType, which is set to the type of the result. False at
/// the end of the map.
bool FindNextCallback(std::optional<std::string>& rAppType, WebAppStatusCallback& rCallback) {
  const std::lock_guard<std::mutex> lock(m_mutexFollowedApp);
  const auto it =
      rAppType ? m_mapWebStatusCallbacks.upper_bound(*rAppType) : m_mapWebStatusCallbacks.begin();
  if (it == m_mapWebStatusCallbacks.end()) {
    return false;
  }
  rAppType = it->first;
  rCallback = it->second;
  return true;
}

enum class Removal { ABSENT, OTHERS_LEFT, LAST };

Removal EraseCallback(const std::string& rAppType) {
  const std::lock_guard<std::mutex> lock(m_mutexFollowedApp);
  if (m_mapWebStatusCallbacks.erase(rAppType) == 0) {
    return Removal::ABSENT;
  }
  return m_mapWebStatusCallbacks.empty() ? Removal::LAST : Removal::OTHERS_LEFT;
}

bool IsAlreadyUp(const std::string& rAppID) {
  const int iStatus = m_iCurrentWebAppStatus;
  return rAppID == GetPreloadingAppID() && iStatus >= WEB_APP_STATUS_PRELOAD &&
         iStatus <= WEB_APP_STATUS_PAUSE;
}

void StartPreloadingTimer() {
  if (m_uPreloadingTimerID != 0) {
    return;
  }
  m_uPreloadingTimerID =
      g_timeout_add_seconds(PRELOAD_RETRY_PERIOD_SECONDS, PreloadingTimerCBFunc, nullptr);
}

bool StopPreloadingTimer() {
  m_uPreloadingTimerID = 0;
  m_iPreloadingCount = 0;
  return false;
}

bool CountPreloadingTry() {
  ++m_iPreloadingCount;
  return true;
}

void OnPreload() {
  if (m_uLMKTimerID != 0) {
    NotifyWebAppStatus();
    return;
  }
  m_uLMKTimerID =
      g_timeout_add_seconds(LMK_CHECK_PERIOD_SECONDS, LMKCheckingTimerCallback, nullptr);
}

void OnResume() {
  if (m_uLMKTimerID != 0) {
    g_source_remove(m_uLMKTimerID);
    m_uLMKTimerID = 0;
  }
  NotifyWebAppStatus();
}

int FindStatus(const std::string& sAppStatus) {
  const auto it = s_mapWebAppStatus.find(sAppStatus);
  return it == s_mapWebAppStatus.end() ? WEB_APP_STATUS_INVALID : it->second;
}

}  // namespace

bool PreloadAppAndRegisterAppStatusChangedCB(const std::string& rAppID, const std::string& rAppType,
                                             const WebAppStatusCallback& rCallback) {
  if (IsAlreadyUp(rAppID)) {
    AddWebStatusChangedCallback(rAppID, rAppType, rCallback);
    return true;
  }
  switch (AppControlUtils::PreloadWebApp(rAppID)) {
    case APP_CONTROL_ERROR_NONE:
      AddWebStatusChangedCallback(rAppID, rAppType, rCallback);
      return RegisterAppStatusVconfCallback(rAppID);
    case APP_CONTROL_ERROR_LAUNCH_REJECTED:
      AddWebStatusChangedCallback(rAppID, rAppType, rCallback);
      StartPreloadingTimer();
      return true;
    case APP_CONTROL_ERROR_APP_NOT_FOUND:
      ORV_LOG_ERROR("[ERROR] Cannot find target app.");
      return false;
    default:
      ORV_LOG_ERROR("[ERROR] SendRequestforPreloading() failed.");
      return false;
  }
}

void AddWebStatusChangedCallback(const std::string& rAppID, const std::string& rAppType,
                                 const WebAppStatusCallback& rCallback) {
  const std::lock_guard<std::mutex> lock(m_mutexWebStatusCallbacks);
  ORV_LOG_INFO("[Info] rAppID : %s, rAppType : %s, pCallbackFuncPtr : %p, pUserData : %p",
               rAppID.c_str(), rAppType.c_str(), reinterpret_cast<void*>(rCallback.first),
               rCallback.second);
  const std::string sFollowedAppID = GetPreloadingAppID();
  const bool bReplacing = !sFollowedAppID.empty() && sFollowedAppID != rAppID;
  if (bReplacing) {
    // The key is the new app's: the old app's subscription stays, and so does the mark that there
    // is one. Intentional: docs/behaviour.md, "A preload of another app drops the callbacks".
    vconf_ignore_key_changed(GetStatusKey(rAppID).c_str(), WebAppStatusChangedCallback);
  }
  const std::lock_guard<std::mutex> lockFollowedApp(m_mutexFollowedApp);
  if (bReplacing) {
    m_mapWebStatusCallbacks.clear();
  }
  m_sPreloadingAppID = rAppID;
  m_mapWebStatusCallbacks[rAppType] = rCallback;
}

void RemoveWebStatusChangedCallback(const std::string& rAppID, const std::string& rAppType) {
  const std::lock_guard<std::mutex> lock(m_mutexWebStatusCallbacks);
  ORV_LOG_INFO("[Info] rAppID : %s, rAppType : %s", rAppID.c_str(), rAppType.c_str());
  const Removal eRemoval = EraseCallback(rAppType);
  if (eRemoval == Removal::ABSENT) {
    ORV_LOG_DEBUG("[Debug] Cannot find target callback function.");
    return;
  }
  if (eRemoval == Removal::LAST) {
    UnregisterAppStatusVconfCallback(rAppID);
  }
}

bool RegisterAppStatusVconfCallback(const std::string& rAppID) {
  if (m_bAppStatusVconfRegistered) {
    ORV_LOG_DEBUG("[Debug] Already regitered.");
    return true;
  }
  const std::string sVconfKey = GetStatusKey(rAppID);
  ORV_LOG_DEBUG("[Debug] sVconfKey = %s", sVconfKey.c_str());
  const int iRet =
      vconf_notify_key_changed(sVconfKey.c_str(), WebAppStatusChangedCallback, nullptr);
  if (iRet != 0) {
    ORV_LOG_ERROR("[ERROR] Error, vconf_notify_key_changed() return %d.", iRet);
    return false;
  }
  m_bAppStatusVconfRegistered = true;
  return true;
}

void UnregisterAppStatusVconfCallback(const std::string& rAppID) {
  ORV_LOG_INFO("[Info] rAppID : %s", rAppID.c_str());
  if (!m_bAppStatusVconfRegistered) {
    return;
  }
  vconf_ignore_key_changed(GetStatusKey(rAppID).c_str(), WebAppStatusChangedCallback);
  m_bAppStatusVconfRegistered = false;
  const std::lock_guard<std::mutex> lock(m_mutexFollowedApp);
  m_sPreloadingAppID.clear();
  m_mapWebStatusCallbacks.clear();
}

void WebAppStatusChangedCallback(keynode_t* pNode, void* pUserData) try {
  if (!m_bAppStatusVconfRegistered) {
    return;
  }
  const char* const pAppStatus = vconf_keynode_get_str(pNode);
  // A removed key has no word; the empty word is not in the table.
  const std::string sAppStatus = pAppStatus ? pAppStatus : "";
  ORV_LOG_DEBUG("[Debug] sAppStatus = %s", sAppStatus.c_str());
  m_iCurrentWebAppStatus = FindStatus(sAppStatus);
  switch (m_iCurrentWebAppStatus) {
    case WEB_APP_STATUS_INVALID:
      ORV_LOG_DEBUG("[Debug] m_iCurrentWebAppStatus is invalid.");
      return;
    case WEB_APP_STATUS_PRELOAD:
      OnPreload();
      return;
    case WEB_APP_STATUS_RESUME:
      OnResume();
      return;
    case WEB_APP_STATUS_PAUSE:
    case WEB_APP_STATUS_QUIT:
      if (m_uLMKTimerID != 0) {
        ORV_LOG_DEBUG("[Debug] LMKTimer is running.");
        return;
      }
      NotifyWebAppStatus();
      return;
    default:
      return;
  }
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

int LMKCheckingTimerCallback(void* pUserData) try {
  ORV_LOG_INFO("[Info] m_iCurrentWebAppStatus : %d, count : %d", m_iCurrentWebAppStatus.load(),
               m_iLMKCheckingCount.load());
  if (m_iCurrentWebAppStatus <= WEB_APP_STATUS_PAUSE) {
    // The id keeps its old value, so the next "preload" sees a running timer. Intentional:
    // docs/behaviour.md, "When an app survives the period".
    NotifyWebAppStatus();
    return false;
  }
  m_uLMKTimerID = 0;
  if (m_iLMKCheckingCount > LMK_CHECK_MAX_COUNT) {
    m_iLMKCheckingCount = 0;
    return false;
  }
  AppControlUtils::PreloadWebApp(GetPreloadingAppID());
  ++m_iLMKCheckingCount;
  // The timer goes on although its id is forgotten. Intentional: docs/behaviour.md, "An app that
  // was destroyed or has quit".
  return true;
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return true;
}

int PreloadingTimerCBFunc(void* pUserData) try {
  ORV_LOG_INFO("[Info] ");
  if (m_iPreloadingCount > PRELOAD_RETRY_MAX_COUNT) {
    StopPreloadingTimer();
    AppControlUtils::LaunchApp(GetPreloadingAppID(), OPERATION_DEFAULT);
    return false;
  }
  ORV_LOG_INFO("[Info] count = %d", m_iPreloadingCount.load());
  const int iCode = AppControlUtils::PreloadWebApp(GetPreloadingAppID());
  if (iCode == APP_CONTROL_ERROR_APP_NOT_FOUND) {
    return StopPreloadingTimer();
  }
  if (iCode != APP_CONTROL_ERROR_NONE) {
    return CountPreloadingTry();
  }
  return RegisterAppStatusVconfCallback(GetPreloadingAppID()) ? StopPreloadingTimer()
                                                              : CountPreloadingTry();
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return true;
}

void NotifyWebAppStatus() {
  // Entry by entry and without a lock during the call: a callback may add, remove or block, and so
  // may another thread meanwhile.
  std::optional<std::string> sAppType;
  WebAppStatusCallback callback;
  while (FindNextCallback(sAppType, callback)) {
    if (callback.first != nullptr) {
      callback.first(m_iCurrentWebAppStatus, callback.second);
    }
  }
}

}  // namespace AppPreloadingUtils
