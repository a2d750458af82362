// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Start-up with stored apps: load and both passes of running them, against a SELECT and the parsing
// of the same rows.
#include <benchmark/benchmark.h>
#include <json/reader.h>

#include <map>
#include <string>
#include <vector>

#include "app_info/AppInfoCache.h"
#include "bench/bench_place.h"
#include "controller/ORVAppCreator.h"
#include "controller/ORVAppOperator.h"

namespace {

/// Fills the store with exactly this many feeders. The daemon may have it open.
void FillStore(long rows) {
  const bench::Database db = bench::OpenWithTable(bench::StorePath());
  bench::Run(db.get(), "BEGIN; DELETE FROM appinfo;");
  for (long i = 0; i < rows; ++i) {
    bench::Run(db.get(), bench::InsertSql(bench::PackageId(static_cast<unsigned long>(i))));
  }
  bench::Run(db.get(), "COMMIT");
}

/// A daemon that has not loaded anything yet, and a store with this many rows.
void StartAfresh(long rows) {
  AppInfoCache* cache = AppInfoCache::GetInstance();
  std::vector<std::string> ids;
  cache->GetAppIDList(ids);
  for (const std::string& id : ids) {
    AppInfo* record = cache->GetAppInfo(id);
    record->GetReleaseFunction()(record);
  }
  cache->ClearCacheAndDB();
  FillStore(rows);
  cache->OpenDB();
}

void StartDaemon(benchmark::State& state) {
  bench::StorePath();
  bench::LeaveTheFakeAside();
  ORVAppCreator* creator = ORVAppCreator::GetInstance();
  StartAfresh(state.range(0));
  for (auto _ : state) {
    creator->LoadAndCreateAppInfo();
    ORVAppOperator::GetInstance()->RunInstalledApps();
    state.PauseTiming();
    StartAfresh(state.range(0));
    state.ResumeTiming();
  }
}

void StartFloor(benchmark::State& state) {
  FillStore(state.range(0));
  const bench::Database db = bench::OpenWithTable(bench::StorePath());
  for (auto _ : state) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db.get(), "SELECT * FROM appinfo", -1, &statement, nullptr);
    while (sqlite3_step(statement) == SQLITE_ROW) {
      std::map<std::string, std::string> row;
      for (int column = 0; column < sqlite3_column_count(statement); ++column) {
        row[sqlite3_column_name(statement, column)] =
            reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
      }
      Json::Value root;
      Json::Reader().parse(row["variables"], root, true);
      benchmark::DoNotOptimize(root);
    }
    sqlite3_finalize(statement);
  }
}

BENCHMARK(StartDaemon)->Name("start/daemon")->RangeMultiplier(10)->Range(10, 10000)->UseRealTime();
BENCHMARK(StartFloor)->Name("start/floor")->RangeMultiplier(10)->Range(10, 10000)->UseRealTime();

}  // namespace
