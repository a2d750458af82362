// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <FCTask.h>
#include <vconf.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "app_info/SchedulingItem.h"
#include "common/SingleInstance.h"

/// Event types of the scheduler. The first two are arguments of RequestEvent() and never queued.
enum SchedulerEvent : int {
  EVENT_ADD_ITEM = 1000,
  EVENT_DELETE_ITEM = 1001,
  EVENT_START_SCHEDULER = 1002,
  EVENT_STOP_SCHEDULER = 1003,
  EVENT_RESET_SCHEDULER = 1004,
  EVENT_LAUNCH_NEXT_ITEM = 1005,
  EVENT_APP_TERMINATED = 1006
};

/// GLib source id of the repeating timer; 0 means that the scheduler is stopped.
extern std::atomic<unsigned int> g_nSchedulerTimerID;

/// The task that runs service apps one at a time, once the TV has network time.
class ORVScheduler : public FCTask {
 public:
  /// See SingleInstance. The first call is made before any other thread exists.
  static ORVScheduler* GetInstance();
  ~ORVScheduler() override;

  /// Called by the layers of service apps, on their thread. EVENT_ADD_ITEM puts the package (a C
  /// string) first, EVENT_DELETE_ITEM removes it from the list. Both end the package's running
  /// service app first, beside the task's thread (docs/behaviour.md, "The list").
  static void RequestEvent(int eventType, void* pParam);

  /// Callable from any thread. A false result is logged; no caller acts on it.
  bool t_SendEvent(int type);
  /// On the task's thread. True for every event.
  bool t_OnEvent(const FSEvent* pEvent) override;

  /// Kills the current service app without waiting for its end. True when no app was running or the
  /// kill succeeded. The item is forgotten either way.
  bool TerminateCurrentServiceApp();
  /// Stops the timer, empties the list and ends the current service app. Always true.
  bool StopScheduler();
  /// Launches the front of the list when it is due. False when the list is empty or the launch
  /// failed; true without a launch when the item is not due, which then waits for the next refill.
  bool LaunchNextItem();

  // The framework calls these, on the task's thread.
  bool t_Create() override { return true; }
  void t_OnSuspend() override {}
  void t_OnResume() override {}
  bool t_CanSuspend() override { return true; }
  bool t_CanResume() override { return true; }
  void t_PurgeEvents() override;

 private:
  friend class SingleInstance<ORVScheduler>;

  ORVScheduler();
  bool CreateMessagePortChannel();
  void WaitForNetworkTime();
  void Dispatch(int type);
  void StartScheduler();
  void ResetScheduler();
  SchedulingItem GetCurrentItem() const;
  void SetCurrentItem(const SchedulingItem& rItem);
  bool IsCurrentPackage(const std::string& rPackageID) const;

  // Leaf: held while m_currentItem is compared, copied or assigned, never across a call or another
  // lock. The task's thread and the callers of RequestEvent() meet here; a termination works on its
  // copy and may clear an item that another thread has set meanwhile.
  mutable std::mutex m_mutexCurrentItem;
  SchedulingItem m_currentItem;  // picked last; all empty when there is none
  // Set by the constructor or by the settings-key callback, never cleared.
  std::atomic<bool> m_bNetworkTimeSet{false};
  // Negative when the port could not be registered. Nothing reads it afterwards.
  std::int32_t m_nLocalPortID = 0;
};

// Platform callbacks, on the main-loop thread. No exception leaves them.

/// user_data is the scheduler's flag, a std::atomic<bool>.
void OnSetTimeChanged(keynode_t* keynode, void* user_data);
/// GLib timer, repeats.
int OnSchedulerTimer(void* user_data);
