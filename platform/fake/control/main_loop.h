// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

/// The main loop and the deadlock watchdog.
namespace fake {

/// Runs within g_main_loop_run(), on its thread; when it returns the loop has ended. By default the
/// loop ends at once.
void SetMainLoopBody(std::function<void()> body);

/// The handle that g_main_loop_new() gave last; null before.
void* MainLoop();

/// Seconds of the last registration with the watchdog; 0 before.
int WatchdogTimeout();
/// Argument of every sign of life.
std::vector<void*> WatchdogNotifications();

}  // namespace fake
