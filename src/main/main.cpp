// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The process: the GLib main loop that the platform's callbacks run on, the two timers that keep
// the process alive and lean, and the two tasks.
#include <FCTaskList.h>
#include <glib.h>
#include <malloc.h>
#include <smart_deadlock.h>

#include "common/Log.h"
#include "controller/ORVInstaller.h"
#include "controller/ORVScheduler.h"

/// Owned by main().
GMainLoop* g_pMainLoop = nullptr;

namespace {

constexpr int WATCHDOG_SECONDS = 120;
constexpr guint WATCHDOG_NOTIFY_MS = 10000;
constexpr guint MEMORY_TRIM_MS = 60000;

/// user_data is the main loop, which the notification reports as alive.
gboolean WatchdogNotifyTimerCallback(gpointer user_data) {
  smart_deadlock_watchdog_notify(user_data);
  return TRUE;
}

gboolean MemoryTrimTimerCallback(gpointer /*user_data*/) {
  malloc_trim(0);
  return TRUE;
}

void CreateTaskList() {
  if (FCTaskList::m_pTaskList == nullptr) {
    FCTaskList::m_pTaskList = new FCList();  // owned by FCTaskList until DestroyTaskList()
  }
  if (FCTaskList::FlagInitialize() == 0) {
    FCTaskList::m_pTaskList->Create();
  }
}

void DestroyTaskList() {
  if (FCTaskList::m_pTaskList == nullptr) {
    return;
  }
  FCTaskList::m_pTaskList->Destroy();
  delete FCTaskList::m_pTaskList;
  FCTaskList::m_pTaskList = nullptr;
}

void StartTimers() {
  smart_deadlock_register_watchdog_service(WATCHDOG_SECONDS);
  const guint nCallbackID =
      g_timeout_add(WATCHDOG_NOTIFY_MS, WatchdogNotifyTimerCallback, g_pMainLoop);
  ORV_LOG_DEBUG("[Debug] SMART_DEADLOCK CallbackId = %d", nCallbackID);
  g_timeout_add(MEMORY_TRIM_MS, MemoryTrimTimerCallback, nullptr);
}

}  // namespace

int main(int /*argc*/, char* /*argv*/[]) {
  ORV_LOG_DEBUG("[Debug] orv-enabler is launched.");
  g_pMainLoop = g_main_loop_new(nullptr, FALSE);
  if (g_pMainLoop == nullptr) {
    ORV_LOG_ERROR("[ERROR] g_pMainLoop is NULL");
    return 0;
  }
  FCSyncDet::Create();
  CreateTaskList();
  // The scheduler first: the records that the installer runs send requests to it.
  ORVScheduler::GetInstance();
  ORVInstaller::GetInstance();
  StartTimers();
  g_main_loop_run(g_pMainLoop);  // for the life of the daemon; nothing in it ends the loop

  FCSyncDet::Destroy();
  DestroyTaskList();
  g_main_loop_unref(g_pMainLoop);
  return 0;
}
