// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <package_manager.h>

#include <functional>
#include <string>
#include <vector>

#include "fake/control/packages.h"

/// A whole daemon in a process of its own, and the television around it.
namespace fault {

extern const std::string kDataDirectory;

/// Empties the directories that belong to the daemon and makes those that the platform makes.
void MakeFreshDirectories();
/// Keys, clock, channel list and mount service as on a television that has no network
/// time yet.
void MakeTelevision();

/// The platform and the web-app service know the package; nobody is told.
void MakeKnown(const fake::Package& package);
/// The platform only.
void MakeKnownWithoutWidgetId(const fake::Package& package);

/// Runs the daemon's entry; the body is what happens while it is in its main loop. Returns whether
/// it got there.
bool RunDaemon(const std::function<void()>& body);

/// Waits until both tasks are at rest and every change of a key is told. The calling thread stands
/// for the main loop's.
void Settle();

/// As the package manager tells it, and waits until everything that it brings is done.
void TellPackageEvent(const std::string& package, package_manager_event_type_e type);
void Install(const fake::Package& package);
void Update(const fake::Package& package);
void Uninstall(const std::string& package);

}  // namespace fault
