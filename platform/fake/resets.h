// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

/// The parts of Reset(): each source resets its own state.
namespace fake {

void ResetApps();
void ResetBundles();
void ResetChannels();
void ResetClock();
void ResetKeys();
void ResetLaunches();
void ResetLog();
void ResetMainLoop();
void ResetMounts();
void ResetOperations();
void ResetPackages();
void ResetPorts();
void ResetProxy();
void ResetTimers();
void ResetTvService();
void ResetWas();

}  // namespace fake
