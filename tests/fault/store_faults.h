// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

/// Faults in the file operations of the daemon's SQLite. Callable from any thread.
namespace fault {

/// Connections opened from now on use these operations.
void WatchTheStore();

/// "sqlite3.xOpen", "sqlite3.xRead", "sqlite3.xWrite", "sqlite3.xSync", "sqlite3.xTruncate",
/// "sqlite3.xLock" or "sqlite3.xDelete".
bool IsStoreOperation(const std::string& name);
/// How often each operation was used, including failures.
std::map<std::string, int> StoreOperations();
void ForgetStoreOperations();

/// Lets the operation return this SQLite result `times` times (fake::FOREVER: always) after it
/// succeeded `after` times. A failing operation does not read, write or lock anything.
void FailStore(const std::string& name, int result, int times, int after);
void ClearStoreFaults();
/// The number of failures caused so far.
int StoreFailures();

/// Opens files read-only, whatever mode the daemon requests.
void MakeStoreReadOnly(bool readOnly);

}  // namespace fault
