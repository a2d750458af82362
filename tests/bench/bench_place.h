// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

/// The place that a benchmark works in: $ORV_BENCH_DIR, a directory on the file system that is to
/// be measured. The daemon's store and data lie below it. Set before the process starts.
namespace bench {

std::string Place();
/// The daemon's store; its directory exists.
std::string StorePath();
/// Number of files and MiB of the archive for unpacking: $ORV_BENCH_ARCHIVE.
std::string ArchivePath();

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
/// A database with the table of the store, as the daemon makes it. Ends the process on a failure.
Database OpenWithTable(const std::string& path);
void Run(sqlite3* db, const std::string& sql);

/// Neither the calls nor the events are recorded from here on: the daemon is measured, not the
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
