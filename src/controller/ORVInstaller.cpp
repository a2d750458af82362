// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVInstaller.h"

#include <FCEMSProxy.h>
#include <TVServiceAPI.h>
#include <glib.h>

#include <array>
#include <cstdint>
#include <exception>

#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/ORVAppCreator.h"
#include "controller/ORVAppOperator.h"

namespace {

constexpr guint VALIDATION_DELAY_SECONDS = 1800;

// In the order of the subscriptions.
constexpr std::array<int, 6> SUBSCRIBED_TVS_SIGNALS = {75, 135, 103, 170, 25, 2560};

}  // namespace

ORVInstaller* ORVInstaller::GetInstance() {
  return SingleInstance<ORVInstaller>::Get();
}

ORVInstaller::ORVInstaller() {
  ORV_LOG_INFO("[Info] ");
  // The thread runs from here on. Until the instance is published only t_Create() and the alarm
  // reach it: the platform calls back only when the main loop runs.
  if (!FCTask::Create("ORVInstaller", 1000, 0x2000)) {
    ORV_LOG_ERROR("[ERROR] FCTask::Create() is failed.");
  }
  ORVAppCreator::GetInstance()->LoadAndCreateAppInfo();
  ORVAppOperator::GetInstance()->RunInstalledApps();
  m_SubscribePackageEvents();
  m_bFirstScreenRun = false;
}

ORVInstaller::~ORVInstaller() {
  if (m_hPackageManager != nullptr) {
    package_manager_unset_event_cb(m_hPackageManager);
    package_manager_destroy(m_hPackageManager);
    m_hPackageManager = nullptr;
  }
  if (m_TVSTimeAlarm.IsRunning()) {
    m_TVSTimeAlarm.Destroy();
  }
  FCTask::Destroy();
}

void ORVInstaller::m_SubscribePackageEvents() {
  int result = package_manager_create(&m_hPackageManager);
  if (result != PACKAGE_MANAGER_ERROR_NONE) {
    ORV_LOG_ERROR("[ERROR] failed to package_manager_create : %d", result);
    return;
  }
  result = package_manager_set_event_cb(m_hPackageManager, PackageManagerEventCallback, nullptr);
  if (result != PACKAGE_MANAGER_ERROR_NONE) {
    ORV_LOG_ERROR("[ERROR] failed to package_manager_set_event_cb : %d", result);
    return;
  }
  g_timeout_add_seconds(VALIDATION_DELAY_SECONDS, ValidationTimerCallback, nullptr);
  if (vconf_notify_key_changed(VCONFKEY_TELLAHUB_RESET.c_str(), TellahubResetCallbackFunc,
                               nullptr) < 0) {
    ORV_LOG_ERROR("[ERROR] failed to vconf_notify_key_changed().");
  }
}

bool ORVInstaller::t_Create() {
  ORV_LOG_INFO("[Info] ");
  if (!m_SubscribeTvmesaSignals() || !m_SubscribeTvsSignals()) {
    return false;
  }
  m_SubscribeHbbtvStatus();
  ORV_LOG_INFO("[Info] start timer");
  m_TVSTimeAlarm.Create(this, EVENT_TVS_TIME_TIMER, 1000, 1);
  return true;
}

bool ORVInstaller::m_SubscribeTvmesaSignals() {
  FCEMSProxy* pTvmesaSignalSubscriber =
      FCEMSProxy::GetInstance(FIIPCConnection::GetInstance(), tvmesa_signal_callback);
  if (pTvmesaSignalSubscriber == nullptr) {
    ORV_LOG_ERROR("[ERROR] pTvmesaSignalSubscriber is NULL");
    return false;
  }
  pTvmesaSignalSubscriber->Subscribe(VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE);
  return true;
}

bool ORVInstaller::m_SubscribeTvsSignals() {
  TCSignalSubscriber* pSignalSubscriber = nullptr;
  if (TVServiceAPI::CreateSignalSubscriber(tvs_signal_callback, &pSignalSubscriber) != 0 ||
      pSignalSubscriber == nullptr) {
    ORV_LOG_ERROR("[ERROR] pSignalSubscriber is NULL");
    return false;
  }
  for (const int signal : SUBSCRIBED_TVS_SIGNALS) {
    pSignalSubscriber->Subscribe(signal, 0, 1, 0, 0);
  }
  return true;
}

void ORVInstaller::m_SubscribeHbbtvStatus() {
  if (vconf_notify_key_changed(VCONFKEY_HBBTV_STATUS.c_str(), vconf_hbbtv_status_cb, this) < 0) {
    ORV_LOG_ERROR("[ERROR] failed to vconf_notify_key_changed().");
  }
}

void ORVInstaller::t_PurgeEvents() {
  FCQueue::Delete(GetQueue(), GetHandler());
}

bool ORVInstaller::t_SendEvent(int type, void* param) {
  ORV_LOG_INFO("[Info] event_type[%d]", type);
  FSEvent event;
  event.pReceiver = GetHandler();
  event.type = static_cast<unsigned int>(type);
  event.P0 = param;
  event.P1 = nullptr;
  const bool bSent = FCTask::Send(event, false, false);
  if (!bSent) {
    ORV_LOG_ERROR("[ERROR] Send() return false!!, Name[%s] Type[%d] P0[%d] P1[%d] Size[%ld]",
                  GetName().c_str(), type, static_cast<int>(reinterpret_cast<std::intptr_t>(param)),
                  0, GetQueue() == nullptr ? 0L : GetQueue()->Size());
  }
  return bSent;
}

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
  if (event_type == PACKAGE_MANAGER_EVENT_TYPE_INSTALL) {
    type = EVENT_PACKAGE_INSTALLED;
  } else if (event_type == PACKAGE_MANAGER_EVENT_TYPE_UNINSTALL) {
    type = EVENT_PACKAGE_UNINSTALLED;
  } else if (event_type == PACKAGE_MANAGER_EVENT_TYPE_UPDATE) {
    type = EVENT_PACKAGE_UPDATED;
  } else {
    return;
  }
  // Owned by the receiver once queued. Not freed when the queue is full (docs/behaviour.md,
  // "Installer events").
  ORVInstaller::GetInstance()->t_SendEvent(type, new std::string(package));
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
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

int ValidationTimerCallback(void* /*user_data*/) try {
  ORVInstaller::GetInstance()->t_SendEvent(RUN_VALIDATION_TESTING, nullptr);
  return FALSE;
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return FALSE;
}
