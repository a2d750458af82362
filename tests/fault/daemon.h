// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <package_manager.h>

#include <functional>
#include <string>
#include <vector>

#include "fake/control/packages.h"

/// A complete daemon in a process of its own, and the fake TV around it.
namespace fault {

extern const std::string DATA_DIRECTORY;

/// Empties the daemon's directories and creates those that the platform creates.
void MakeFreshDirectories();
/// Sets up keys, clock, channel list and mount service as on a TV that has no network
/// time yet.
void MakeTelevision();

/// Adds the package to the platform and the web-app service without an event.
void MakeKnown(const fake::Package& package);
/// Adds the package to the platform only, without an event.
void MakeKnownWithoutWidgetId(const fake::Package& package);

/// Runs the daemon's entry point, and `body` while the daemon is in its main loop. Returns whether
/// it reached the main loop.
bool RunDaemon(const std::function<void()>& body);

/// Waits until both tasks are idle and every key change is delivered. The calling thread acts as
/// the main loop.
void Settle();

/// Sends the event as the package manager does, and waits until all its effects are complete.
void TellPackageEvent(const std::string& package, package_manager_event_type_e type);
void Install(const fake::Package& package);
void Update(const fake::Package& package);
void Uninstall(const std::string& package);

}  // namespace fault
