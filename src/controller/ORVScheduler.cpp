// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/ORVScheduler.h"

#include <app_control.h>
#include <app_manager.h>
#include <app_manager_extension.h>
#include <glib.h>
#include <message_port.h>

#include <ctime>
#include <exception>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/SchedulerMessagePort.h"
#include "controller/ServiceAppTermination.h"
#include "utils/AppControlUtils.h"
#include "utils/TimeUtils.h"

namespace {

constexpr guint SCHEDULER_PERIOD_SECONDS = 720;

/// What a request does to the list.
using ListChange = void (*)(ORVScheduler& rScheduler, const std::string& rPackageID);

void AddItem(ORVScheduler& rScheduler, const std::string& rPackageID) {
  AppInfoCache::GetInstance()->AddSchedulingItem(rPackageID);
  // Posted even when the cache has no such package.
  rScheduler.t_SendEvent(g_nSchedulerTimerID == 0 ? EVENT_START_SCHEDULER : EVENT_LAUNCH_NEXT_ITEM);
}

void DeleteItem(ORVScheduler& /*rScheduler*/, const std::string& rPackageID) {
  AppInfoCache::GetInstance()->RemoveSchedulingItem(rPackageID);
}

}  // namespace

std::atomic<unsigned int> g_nSchedulerTimerID{0};

ORVScheduler* ORVScheduler::GetInstance() {
  return SingleInstance<ORVScheduler>::Get();
}

ORVScheduler::ORVScheduler() {
  ORV_LOG_INFO("[Info] ");
  if (!FCTask::Create("ORVScheduler", 1000, 0x2000)) {
    ORV_LOG_ERROR("[ERROR] FCTask::Create() return false.");
  }
  if (!CreateMessagePortChannel()) {
    // Without the port, network time is not read either: the scheduler stays idle for good.
    ORV_LOG_ERROR("[ERROR] CreateMessagePortChannel return false.");
    return;
  }
  WaitForNetworkTime();
}

ORVScheduler::~ORVScheduler() {
  FCTask::Destroy();
}

bool ORVScheduler::CreateMessagePortChannel() {
  ORV_LOG_INFO("[Info] ");
  m_nLocalPortID = message_port_register_local_port(SCHEDULER_COMMAND_PORT.c_str(),
                                                    MessagePortCommandCallback, nullptr);
  if (m_nLocalPortID < 0) {
    ORV_LOG_ERROR("[ERROR] Port register error: %d", m_nLocalPortID);
    return false;
  }
  return true;
}

void ORVScheduler::WaitForNetworkTime() {
  m_bNetworkTimeSet = false;
  int value = 0;
  vconf_get_int(VCONFKEY_NETWORK_SET_TIME.c_str(), &value);
  if (value == 1) {
    m_bNetworkTimeSet = true;
    t_SendEvent(EVENT_START_SCHEDULER);
    return;
  }
  const int ret = vconf_notify_key_changed(VCONFKEY_NETWORK_SET_TIME.c_str(), OnSetTimeChanged,
                                           &m_bNetworkTimeSet);
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] vconf_notify_key_changed, ret = %d", ret);
  }
}

void ORVScheduler::t_PurgeEvents() {
  FCQueue::Delete(GetQueue(), GetHandler());
}

bool ORVScheduler::t_SendEvent(int type) {
  FSEvent event;
  event.pReceiver = GetHandler();
  event.type = static_cast<unsigned int>(type);
  event.P0 = nullptr;
  event.P1 = nullptr;
  const bool bSent = FCTask::Send(event, false, false);
  if (!bSent) {
    ORV_LOG_ERROR("[ERROR] Send() return False!!, Name[%s] Type[%d] P0[%d] P1[%d] Size[%ld]",
                  GetName().c_str(), type, 0, 0, GetQueue() == nullptr ? 0L : GetQueue()->Size());
  }
  return bSent;
}

bool ORVScheduler::t_OnEvent(const FSEvent* pEvent) try {
  if (FCTask::t_OnEvent(pEvent)) {
    return true;
  }
  const int type = static_cast<int>(pEvent->type);
  ORV_LOG_INFO("[Info] pEvent : %d", type);
  Dispatch(type);
  return true;
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return true;
}

void ORVScheduler::Dispatch(int type) {
  switch (type) {
    case EVENT_START_SCHEDULER:
      ORV_LOG_DEBUG("[Debug] [EVENT_START_SCHEDULER]");
      StartScheduler();
      return;
    case EVENT_STOP_SCHEDULER:
      ORV_LOG_DEBUG("[Debug] [EVENT_STOP_SCHEDULER]");
      if (!StopScheduler()) {
        ORV_LOG_DEBUG("[Debug] StopScheduler() return false.");
      }
      return;
    case EVENT_RESET_SCHEDULER:
      ORV_LOG_DEBUG("[Debug] [EVENT_RESET_SCHEDULER]");
      ResetScheduler();
      return;
    case EVENT_LAUNCH_NEXT_ITEM:
      ORV_LOG_DEBUG("[Debug] [EVENT_LAUNCH_NEXT_ITEM]");
      TerminateCurrentServiceApp();
      if (!LaunchNextItem()) {
        ORV_LOG_DEBUG("[Debug] LaunchNextItem() return false.");
      }
      return;
    case EVENT_APP_TERMINATED:
      ORV_LOG_DEBUG("[Debug] [EVENT_APP_TERMINATED]");
      TerminateCurrentServiceApp();
      // An empty list is refilled by the next tick, not here.
      if (AppInfoCache::GetInstance()->GetSchedulingListSize() > 0) {
        LaunchNextItem();
      }
      return;
    default:
      ORV_LOG_DEBUG("[Debug] Invalid Event Type : %d", type);
  }
}

void ORVScheduler::StartScheduler() {
  if (!m_bNetworkTimeSet) {
    ORV_LOG_DEBUG("[Debug] Network Time is not enabled.");
    ORV_LOG_DEBUG("[Debug] StartScheduler() return false.");
    return;
  }
  if (AppInfoCache::GetInstance()->GetSchedulingListSize() == 0) {
    AppInfoCache::GetInstance()->ResetSchedulingList();
  }
  // A second start adds a second source and loses the first id. RequestEvent() posts a start only
  // when the id is 0.
  g_nSchedulerTimerID = g_timeout_add_seconds(SCHEDULER_PERIOD_SECONDS, OnSchedulerTimer, nullptr);
  LaunchNextItem();
}

void ORVScheduler::ResetScheduler() {
  AppInfoCache* pCache = AppInfoCache::GetInstance();
  if (pCache->GetSchedulingListSize() == 0 && pCache->ResetSchedulingList() == 0) {
    ORV_LOG_DEBUG("[Debug] Scheduling List is empty");
    StopScheduler();
    return;
  }
  // The current service app keeps running: a tick does not end it (docs/behaviour.md, "Scheduler").
  if (!LaunchNextItem()) {
    ORV_LOG_DEBUG("[Debug] LaunchNextItem() return false.");
  }
}

bool ORVScheduler::LaunchNextItem() {
  SchedulingItem item;
  if (!AppInfoCache::GetInstance()->GetNextSchedulingItem(item)) {
    ORV_LOG_DEBUG("[Debug] Scheduling List is empty!!!");
    return false;
  }
  SetCurrentItem(item);
  const time_t now = time(nullptr);
  const time_t expiry = TimeUtils::GetEpochTime(item.expiration_date);
  ORV_LOG_DEBUG("[Debug] now : %d, time : %d", static_cast<int>(now), static_cast<int>(expiry));
  if (now < expiry) {
    return true;  // not due; the item stays current although no app of it runs
  }
  if (!AppControlUtils::LaunchApp(item.service_id, OPERATION_DEFAULT)) {
    ORV_LOG_ERROR("[ERROR] AppControlUtils::LaunchApp() return false.");
    return false;
  }
  ORV_LOG_DEBUG("[Debug] Launched Time : %s", TimeUtils::GetUTCTimeString(&now).c_str());
  return true;
}

bool ORVScheduler::TerminateCurrentServiceApp() {
  const std::string sServiceID = GetCurrentItem().service_id;
  if (sServiceID.empty()) {
    return true;
  }
  ORV_LOG_INFO("[Info] Current ServiceApp ID : %s", sServiceID.c_str());
  bool bRunning = false;
  app_manager_is_running(sServiceID.c_str(), &bRunning);
  if (!bRunning) {
    SetCurrentItem({});
    return true;
  }
  app_context_h hContext = nullptr;
  const int ret = app_manager_get_app_context(sServiceID.c_str(), &hContext);
  // Forgotten before anything has ended, so the log lines below show an empty id.
  SetCurrentItem({});
  if (ret != 0) {
    ORV_LOG_ERROR("[ERROR] app_manager_get_app_context() failed = %s",
                  ServiceAppTermination::GetErrorText(ret));
    return false;
  }
  return ServiceAppTermination::TerminateApp(hContext, GetCurrentItem().service_id);
}

bool ORVScheduler::StopScheduler() {
  ORV_LOG_INFO("[Info] ");
  if (g_nSchedulerTimerID != 0) {
    g_source_remove(g_nSchedulerTimerID);
    g_nSchedulerTimerID = 0;
  }
  AppInfoCache::GetInstance()->ClearSchedulingList();
  if (!TerminateCurrentServiceApp()) {
    ORV_LOG_DEBUG("[Debug] TerminateCurrentServiceApp() return false.[ServiceID : %s]",
                  GetCurrentItem().service_id.c_str());
  }
  return true;
}

SchedulingItem ORVScheduler::GetCurrentItem() const {
  const std::lock_guard<std::mutex> lock(m_mutexCurrentItem);
  return m_currentItem;
}

void ORVScheduler::SetCurrentItem(const SchedulingItem& rItem) {
  const std::lock_guard<std::mutex> lock(m_mutexCurrentItem);
  m_currentItem = rItem;
}

bool ORVScheduler::IsCurrentPackage(const std::string& rPackageID) const {
  const std::lock_guard<std::mutex> lock(m_mutexCurrentItem);
  return rPackageID == m_currentItem.package_id;
}

void ORVScheduler::RequestEvent(int eventType, void* pParam) {
  ORVScheduler* pScheduler = GetInstance();
  ORV_LOG_INFO("[Info] EventType : %d", eventType);
  ListChange pfnChange = nullptr;
  switch (eventType) {
    case EVENT_ADD_ITEM:
      ORV_LOG_DEBUG("[Debug] [EVENT_ADD_ITEM]");
      pfnChange = AddItem;
      break;
    case EVENT_DELETE_ITEM:
      ORV_LOG_DEBUG("[Debug] [EVENT_DELETE_ITEM]");
      pfnChange = DeleteItem;
      break;
    default:
      ORV_LOG_DEBUG("[Debug] Invalid EventType : %d", eventType);
      return;
  }
  if (pParam == nullptr) {
    ORV_LOG_DEBUG("[Debug] pParam is NULL");
    return;
  }
  const std::string sPackageID = static_cast<const char*>(pParam);
  if (pScheduler->IsCurrentPackage(sPackageID)) {
    pScheduler->TerminateCurrentServiceApp();
  }
  pfnChange(*pScheduler, sPackageID);
}

void OnSetTimeChanged(keynode_t* keynode, void* user_data) try {
  const int value = vconf_keynode_get_int(keynode);
  ORV_LOG_DEBUG("[Debug] set_time value = %d", value);
  if (value != 1) {
    return;
  }
  *static_cast<std::atomic<bool>*>(user_data) = true;
  ORVScheduler::GetInstance()->t_SendEvent(EVENT_START_SCHEDULER);
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

int OnSchedulerTimer(void* /*user_data*/) try {
  ORVScheduler::GetInstance()->t_SendEvent(EVENT_RESET_SCHEDULER);
  return TRUE;
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  return TRUE;
}
