// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

/// Failing file operations underneath the daemon's SQLite. Callable from any thread.
namespace fault {

/// Connections that are opened from now on go through here.
void WatchTheStore();

/// "sqlite3.xOpen", "sqlite3.xRead", "sqlite3.xWrite", "sqlite3.xSync", "sqlite3.xTruncate",
/// "sqlite3.xLock" or "sqlite3.xDelete".
bool IsStoreOperation(const std::string& name);
/// How often each was used, failures included.
std::map<std::string, int> StoreOperations();
void ForgetStoreOperations();

/// Lets the operation give this SQLite result `times` times (fake::kForever: from then on) after it
/// went well `after` times. Nothing is read, written or locked then.
void FailStore(const std::string& name, int result, int times, int after);
void ClearStoreFaults();
/// Failures handed out so far.
int StoreFailures();

/// Files open for reading only, whatever the daemon asks for.
void MakeStoreReadOnly(bool readOnly);

}  // namespace fault
