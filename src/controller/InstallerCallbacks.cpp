// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/InstallerCallbacks.h"

#include <algorithm>
#include <exception>
#include <string>

#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/AllRecords.h"
#include "controller/BoostDecision.h"
#include "controller/InstallerEvents.h"
#include "controller/ORVInstaller.h"

void PackageManagerEventCallback(const char* /*type*/, const char* package,
                                 package_manager_event_type_e event_type,
                                 package_manager_event_state_e event_state, int /*progress*/,
                                 package_manager_error_e /*error*/, void* /*user_data*/) try {
  if (event_state != PACKAGE_MANAGER_EVENT_STATE_COMPLETED) {
    return;
  }
  if (package == nullptr) {
    ORV_LOG_ERROR("[ERROR] The package event has no package id.");
    return;
  }
  int type = 0;
  switch (event_type) {
    case PACKAGE_MANAGER_EVENT_TYPE_INSTALL:
      type = EVENT_PACKAGE_INSTALLED;
      break;
    case PACKAGE_MANAGER_EVENT_TYPE_UNINSTALL:
      type = EVENT_PACKAGE_UNINSTALLED;
      break;
    case PACKAGE_MANAGER_EVENT_TYPE_UPDATE:
      type = EVENT_PACKAGE_UPDATED;
      break;
    default:
      return;
  }
  // Owned by the receiver once queued. Not freed when the queue is full (docs/behaviour.md,
  // "Installer events").
  ORVInstaller::GetInstance()->t_SendEvent(type, new std::string(package));
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

int ValidationTimerCallback(void* /*user_data*/) try {
  ORVInstaller::GetInstance()->t_SendEvent(RUN_VALIDATION_TESTING, nullptr);
  return 0;
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return 0;
}

int tvmesa_signal_callback(int signalType, void* /*data*/) try {
  ORV_LOG_INFO("[Info] signalType[%d]", signalType);
  if (signalType == VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE) {
    ORVInstaller::GetInstance()->t_SendEvent(VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE, nullptr);
  }
  return 1;
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return 1;
}

int tvs_signal_callback(int signalType, const void* signalData, void* /*user_data*/) try {
  ORV_LOG_INFO("[Info] signalType[%d]", signalType);
  const auto signal =
      std::find_if(TV_SIGNALS.begin(), TV_SIGNALS.end(),
                   [=](const TvSignal& rSignal) { return rSignal.number == signalType; });
  if (signal == TV_SIGNALS.end()) {
    return 1;
  }
  switch (signal->kind) {
    case TvSignalKind::TUNE:
      BoostDecision::OnTune(signalData);
      break;
    case TvSignalKind::NOT_BOOSTING:
      BoostDecision::RemoveBoostFlag();
      break;
    case TvSignalKind::ACTIVATE:
      ORVInstaller::GetInstance()->t_SendEvent(SIGNAL_TVS_ACTIVATE, nullptr);
      break;
  }
  return 1;
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return 1;
}

void vconf_hbbtv_status_cb(keynode_t* /*keynode*/, void* user_data) try {
  static_cast<ORVInstaller*>(user_data)->m_OnHbbtvStatusChanged();
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

void TellahubResetCallbackFunc(keynode_t* /*keynode*/, void* /*user_data*/) try {
  int value = -1;
  if (vconf_get_int(VCONFKEY_TELLAHUB_RESET.c_str(), &value) != 0) {
    ORV_LOG_ERROR("[ERROR] vconf_get_int() failed.");
    return;
  }
  ORV_LOG_DEBUG("[Debug] VCONFKEY_TELLAHUB_RESET value %d", value);
  if (value != 0) {
    return;
  }
  ORV_LOG_DEBUG("[Debug] Reset AppInfo");
  AllRecords::RunAndRemove();
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}
