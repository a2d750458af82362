// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <package_manager.h>
#include <vconf.h>

// The platform callbacks of ORVInstaller, which subscribes them. No exception leaves them.

/// Main-loop thread. Posts completed events only.
void PackageManagerEventCallback(const char* type, const char* package,
                                 package_manager_event_type_e event_type,
                                 package_manager_event_state_e event_state, int progress,
                                 package_manager_error_e error, void* user_data);
/// Main-loop thread (GLib timer, fires once).
int ValidationTimerCallback(void* user_data);
/// A thread of the signal library. Always 1.
int tvmesa_signal_callback(int signalType, void* data);
/// A thread of the TV-service library; the flag file is written here, not on the task. Always 1.
int tvs_signal_callback(int signalType, const void* signalData, void* user_data);
/// Main-loop thread. user_data is the ORVInstaller.
void vconf_hbbtv_status_cb(keynode_t* keynode, void* user_data);
/// Main-loop thread. Runs all records and then removes them. Waits for an operation that the task
/// runs on the same record.
void TellahubResetCallbackFunc(keynode_t* keynode, void* user_data);
