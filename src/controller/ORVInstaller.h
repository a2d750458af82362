// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <FCTask.h>
#include <package_manager.h>

#include <atomic>
#include <cstdint>

#include "common/SingleInstance.h"
#include "controller/InstallerEvents.h"

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

  void m_Dispatch(int type, void* pPayload);
  void m_CheckBoostFlagWithCh();
  void m_StopTimeAlarm();

  // Main thread only, in construction and destruction.
  package_manager_h m_hPackageManager = nullptr;
  // Written by the task's thread and by the settings-key callback.
  std::atomic<bool> m_bFirstScreenRun{false};
  // Self-synchronised.
  FCStateAlarm m_TVSTimeAlarm;
};
