// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "bench/bench_place.h"

#include <dlog.h>
#include <tzplatform_config.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "fake/control/fake.h"
#include "framework/backend.h"

namespace bench {

std::string Place() {
  const char* place = std::getenv("ORV_BENCH_DIR");
  if (place == nullptr || *place == '\0') {
    std::fprintf(stderr,
                 "orv_bench: ORV_BENCH_DIR is not a directory. Start it with tests/bench/run.\n");
    std::exit(2);
  }
  return place;
}

std::string StorePath() {
  const std::string directory = Place() + "/com.kalmora.tv.orv-enabler/data";
  std::filesystem::create_directories(directory);
  std::filesystem::create_directories(Place() + "/com.kalmora.tv.orv-enabler/shared/data");
  return directory + "/appinfo.db";
}

std::string ArchivePath() {
  const char* archive = std::getenv("ORV_BENCH_ARCHIVE");
  return archive == nullptr ? "" : archive;
}

Database OpenWithTable(const std::string& path) {
  sqlite3* db = nullptr;
  if (sqlite3_open(path.c_str(), &db) != SQLITE_OK) {
    std::fprintf(stderr, "orv_bench: cannot open %s: %s\n", path.c_str(), sqlite3_errmsg(db));
    std::exit(1);
  }
  Database owner(db, &sqlite3_close);
  Run(db,
      "CREATE TABLE IF NOT EXISTS appinfo(package_id TEXT PRIMARY KEY, app_id TEXT, widget_id TEXT,"
      " service_id TEXT, version TEXT, variables TEXT, extra_data1 TEXT, extra_data2 TEXT,"
      " extra_data3 TEXT, extra_data4 TEXT);");
  return owner;
}

void Run(sqlite3* db, const std::string& sql) {
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    std::fprintf(stderr, "orv_bench: %s: %s\n", sql.c_str(), sqlite3_errmsg(db));
    std::exit(1);
  }
}

std::string PackageId(unsigned long number) {
  char id[32];
  std::snprintf(id, sizeof(id), "bench%06lu", number);
  return id;
}

std::string ChannelUrl(const std::string& package) {
  return "http://example.org/" + package + "/channels.json";
}

std::string ScheduleUrl(const std::string& package) {
  return "http://example.org/" + package + "/schedule.json";
}

std::string Variables(const std::string& package) {
  return R"({"orv_data":{"ch.app.boosting":"","channel_data_url":")" + ChannelUrl(package) +
         R"(","schedule_data_url":")" + ScheduleUrl(package) +
         R"("},"orv_type":{"ch_feeder_standard":"standard"}})" + "\n";
}

std::string InsertSql(const std::string& package) {
  return "INSERT INTO appinfo VALUES( '" + package + "', '" + package + ".App', '" + package +
         ".App', '', '1.0.0', '" + Variables(package) + "', '', '', '', '' )";
}

void LeaveTheFakeAside() {
  fake::SetRecording(false);
  framework::SetBackend(nullptr);
}

}  // namespace bench

// The log service gets the format and the arguments; formatting them is its own cost, as on the
// target. With $ORV_BENCH_LOG the text is formatted here, to measure what that adds.
extern "C" int __wrap___dlog_print(log_id_t, int, const char*, const char* format, ...) {
  static const bool s_makeText = std::getenv("ORV_BENCH_LOG") != nullptr;
  if (!s_makeText) {
    return 0;
  }
  char text[1024];
  std::va_list args;
  va_start(args, format);
  const int length = std::vsnprintf(text, sizeof(text), format, args);
  va_end(args);
  return length;
}

extern "C" const char* __wrap_tzplatform_getenv(enum tzplatform_variable) {
  static const std::string s_place = bench::Place();
  return s_place.c_str();
}

extern "C" char* __wrap_app_get_data_path() {
  return strdup((bench::Place() + "/com.kalmora.tv.orv-enabler/data/").c_str());
}

extern "C" char* __wrap_app_get_shared_data_path() {
  return strdup((bench::Place() + "/com.kalmora.tv.orv-enabler/shared/data/").c_str());
}
