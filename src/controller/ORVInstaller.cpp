// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVInstaller.h"

#include <FCEMSProxy.h>
#include <TVServiceAPI.h>
#include <glib.h>
#include <vconf.h>

#include <cstdint>
#include <exception>
#include <memory>
#include <string>

#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/AllRecords.h"
#include "controller/BoostDecision.h"
#include "controller/InstallerCallbacks.h"
#include "controller/ORVAppCreator.h"
#include "controller/ORVAppOperator.h"
#include "controller/PackageEvents.h"

namespace {

constexpr guint VALIDATION_DELAY_SECONDS = 1800;

using PackageEventHandler = void (*)(const std::string& rPackageID);

/// Owns the payload, which is the package id. It is freed before the work begins.
void HandlePackageEvent(void* pPayload, PackageEventHandler pfnHandler) {
  if (pPayload == nullptr) {
    ORV_LOG_ERROR("[ERROR] l[0] param is NULL.");
    return;
  }
  std::unique_ptr<std::string> pPackageID(static_cast<std::string*>(pPayload));
  const std::string sPackageID = *pPackageID;
  pPackageID.reset();
  pfnHandler(sPackageID);
}

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
  m_StopTimeAlarm();
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
  for (const TvSignal& rSignal : TV_SIGNALS) {
    pSignalSubscriber->Subscribe(rSignal.number, 0, 1, 0, 0);
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

bool ORVInstaller::t_OnEvent(const FSEvent* pEvent) try {
  if (FCTask::t_OnEvent(pEvent)) {
    return true;
  }
  const int type = static_cast<int>(pEvent->type);
  ORV_LOG_INFO("[Info] pEvent : %d", type);
  m_Dispatch(type, pEvent->P0);
  return true;
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return true;
}

void ORVInstaller::m_Dispatch(int type, void* pPayload) {
  switch (type) {
    case EVENT_PACKAGE_INSTALLED:
      HandlePackageEvent(pPayload, PackageEvents::Install);
      return;
    case EVENT_PACKAGE_UPDATED:
      HandlePackageEvent(pPayload, PackageEvents::Update);
      return;
    case EVENT_PACKAGE_UNINSTALLED:
      HandlePackageEvent(pPayload, PackageEvents::Uninstall);
      return;
    case RUN_VALIDATION_TESTING:
      AllRecords::RunValidationTesting();
      return;
    case SIGNAL_TVS_ACTIVATE:
      AllRecords::PreloadWebApps();
      return;
    case EVENT_TVS_TIME_TIMER:
      m_CheckBoostFlagWithCh();
      return;
    case VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE:
      AllRecords::RunCustomFeeders();
      return;
    default:
      ORV_LOG_ERROR("[ERROR] Invalid EventType : %d", type);
  }
}

bool ORVInstaller::m_IsBoostingApp(std::uint64_t serviceID) {
  return BoostDecision::IsBoostingApp(serviceID);
}

bool ORVInstaller::m_IsBoostingAppOnCurrentCh() {
  return BoostDecision::IsBoostingAppOnCurrentCh();
}

void ORVInstaller::m_CheckBoostFlagWithCh() {
  ORV_LOG_INFO("[Info] TVS Time Timer");
  const bool bBoostFile = BoostDecision::HasBoostFlag();
  const bool bBoostChApp = m_IsBoostingAppOnCurrentCh();
  ORV_LOG_INFO("[Info] isBoostFile : %lu, isBoostChApp : %lu",
               static_cast<unsigned long>(bBoostFile), static_cast<unsigned long>(bBoostChApp));
  if (BoostDecision::DecideFirstScreen(bBoostFile, bBoostChApp)) {
    m_bFirstScreenRun = true;
  }
  m_StopTimeAlarm();
}

void ORVInstaller::m_StopTimeAlarm() {
  if (m_TVSTimeAlarm.IsRunning()) {
    m_TVSTimeAlarm.Destroy();
  }
}

void ORVInstaller::m_OnHbbtvStatusChanged() {
  ORV_LOG_DEBUG("[Debug] vconf_hbbtv_status_cb");
  if (m_bFirstScreenRun) {
    ORV_LOG_DEBUG("[Debug] first screen already run");
    vconf_ignore_key_changed(VCONFKEY_HBBTV_STATUS.c_str(), vconf_hbbtv_status_cb);
    return;
  }
  int value = -1;
  if (vconf_get_int(VCONFKEY_HBBTV_STATUS.c_str(), &value) != 0) {
    ORV_LOG_ERROR("[ERROR] vconf_get_int() failed.");
    return;
  }
  ORV_LOG_DEBUG("[Debug] VCONFKEY_HBBTV_CHANGED value %d", value);
  if (value != 6 && value != 10) {
    return;
  }
  ORV_LOG_DEBUG("[Debug] LAUNCHING fisrtscreen app");
  BoostDecision::StartFirstScreen();
  m_bFirstScreenRun = true;  // for a change of the key that is already being delivered
  vconf_ignore_key_changed(VCONFKEY_HBBTV_STATUS.c_str(), vconf_hbbtv_status_cb);
}
