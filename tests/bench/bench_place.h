// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

/// The directory that a benchmark works in: $ORV_BENCH_DIR, on the file system to be measured. It
/// contains the daemon's store and data. Set before the process starts.
namespace bench {

std::string Place();
/// The daemon's store; its directory exists.
std::string StorePath();
/// Number of files and MiB of the archive for unpacking: $ORV_BENCH_ARCHIVE.
std::string ArchivePath();

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
/// A database with the table of the store, as the daemon creates it. Exits the process on failure.
Database OpenWithTable(const std::string& path);
void Run(sqlite3* db, const std::string& sql);

/// Stops recording calls and events, so that the daemon is measured and not the
/// fake.
void LeaveTheFakeAside();

/// "bench000042"
std::string PackageId(unsigned long number);
std::string ChannelUrl(const std::string& package);
std::string ScheduleUrl(const std::string& package);
/// The text that the daemon writes for this feeder.
std::string Variables(const std::string& package);
std::string InsertSql(const std::string& package);

}  // namespace bench
