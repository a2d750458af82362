// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vconf.h>

#include "app_info/AppInfo.h"

/// The wait of a record for the widget id of its web app. Only one record can wait: a later one
/// takes its place, and the earlier one is then not run by this path (docs/behaviour.md, "Package
/// events").
namespace WidgetIDWait {

/// Runs the record, which is in the cache, once the web-app service announces a widget id. Called
/// with the RecordGuard of the record's package. A refused subscription is a log line.
void Begin(AppInfo* pAppInfo);

/// Ends the wait of this record; no effect on the wait of another one. Called with the RecordGuard
/// of the record's package before the record is destroyed, so that a new record at the same address
/// does not inherit the wait. The subscription stays until the next change of the key.
void End(const AppInfo* pAppInfo);

}  // namespace WidgetIDWait

/// Main-loop thread. user_data is the AppInfo that waits; only its address is used unless it still
/// waits. No exception leaves the callback.
void AppInstalledCallback(keynode_t* keynode, void* user_data);
