// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <FCTask.h>
#include <package_manager.h>
#include <vconf.h>

#include <atomic>
#include <cstdint>
#include <string>

#include "common/SingleInstance.h"

/// Event types of the installer task. The signals keep the numbers that their senders use.
enum InstallerEvent : int {
  SIGNAL_TVS_ACTIVATE = 75,
  EVENT_PACKAGE_INSTALLED = 1000,
  EVENT_PACKAGE_UPDATED = 1001,
  EVENT_PACKAGE_UNINSTALLED = 1002,
  RUN_VALIDATION_TESTING = 1003,
  EVENT_TVS_TIME_TIMER = 1004,
  VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE = 90014
};

/// The daemon's central task. Platform callbacks post events to its queue; its thread handles one
/// event at a time, to the end.
class ORVInstaller : public FCTask {
 public:
  /// See SingleInstance. The first call is made on the main thread.
  static ORVInstaller* GetInstance();
  ~ORVInstaller() override;

  /// Callable from any thread. For the package events param is a heap-allocated std::string that
  /// the receiver owns once it is queued; on a false result it stays allocated.
  bool t_SendEvent(int type, void* param);
  /// On the task's thread. True for every event, including unknown ones.
  bool t_OnEvent(const FSEvent* pEvent) override;

  /// Whether the app of the service asks for an early start; false when a lookup fails. Any thread.
  bool m_IsBoostingApp(std::uint64_t serviceID);
  /// The same for the current service of a TV that booted on a virtual channel.
  bool m_IsBoostingAppOnCurrentCh();
  /// Handles a change of the HbbTV status on the main-loop thread. Launches the first-screen app
  /// when the other side is ready, unless a decision was taken before. The boost timer may launch
  /// it again.
  void m_OnHbbtvStatusChanged();

  // The framework calls these, on the task's thread.
  /// Earlier subscriptions are kept when a later one fails.
  bool t_Create() override;
  void t_OnSuspend() override {}
  void t_OnResume() override {}
  bool t_CanSuspend() override { return true; }
  bool t_CanResume() override { return true; }
  void t_PurgeEvents() override;

 private:
  friend class SingleInstance<ORVInstaller>;

  ORVInstaller();
  void m_SubscribePackageEvents();
  bool m_SubscribeTvmesaSignals();
  bool m_SubscribeTvsSignals();
  void m_SubscribeHbbtvStatus();

  void m_Dispatch(const FSEvent& rEvent);
  void m_DispatchPackageEvent(int type, const std::string& rPackageID);
  void m_InstallApp(const std::string& rPackageID);
  void m_UpdateApp(const std::string& rPackageID);
  void m_UninstallApp(const std::string& rPackageID);
  void m_RunValidationTesting();
  void m_PreloadWebApps();
  void m_RunCustomFeeders();
  void m_CheckBoostFlagWithCh();
  void m_DecideFirstScreen(bool bBoostFile, bool bBoostChApp);

  // Main thread only, in construction and destruction.
  package_manager_h m_hPackageManager = nullptr;
  // Written by the task's thread and by the settings-key callback.
  std::atomic<bool> m_bFirstScreenRun{false};
  // Self-synchronised.
  FCStateAlarm m_TVSTimeAlarm;
};

// Platform callbacks. No exception leaves them.

/// Main-loop thread. Posts completed events only.
void PackageManagerEventCallback(const char* type, const char* package,
                                 package_manager_event_type_e event_type,
                                 package_manager_event_state_e event_state, int progress,
                                 package_manager_error_e error, void* user_data);
/// Main-loop thread (GLib timer, fires once).
int ValidationTimerCallback(void* user_data);
/// A thread of the signal library.
int tvmesa_signal_callback(int signalType, void* data);
/// A thread of the TV-service library; the flag file is written here, not on the task.
int tvs_signal_callback(int signalType, const void* signalData, void* user_data);
/// Main-loop thread. user_data is the ORVInstaller.
void vconf_hbbtv_status_cb(keynode_t* keynode, void* user_data);
/// Main-loop thread. Runs all records and then removes them. Waits for an operation that the task
/// runs on the same record.
void TellahubResetCallbackFunc(keynode_t* keynode, void* user_data);
