// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// Registers the calling process with the deadlock watchdog, which restarts a process that has not
/// notified it for longer than this number of seconds. Returns 0 on success.
int smart_deadlock_register_watchdog_service(int timeout_seconds);
/// A sign of life. context names the loop that is alive; the watchdog does not dereference it.
int smart_deadlock_watchdog_notify(void* context);

#ifdef __cplusplus
}
#endif
