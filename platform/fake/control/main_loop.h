// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

/// The main loop and the deadlock watchdog.
namespace fake {

/// Runs within g_main_loop_run(), on its thread; the loop ends when it returns. By default the loop
/// ends at once.
void SetMainLoopBody(std::function<void()> body);

/// The handle that g_main_loop_new() returned last; null before.
void* MainLoop();

/// Seconds of the last registration with the watchdog; 0 before.
int WatchdogTimeout();
/// The argument of each notification.
std::vector<void*> WatchdogNotifications();

}  // namespace fake
