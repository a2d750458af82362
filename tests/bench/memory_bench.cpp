// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Heap per stored app, against the bytes of its row.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstddef>

#include "bench/bench_place.h"
#include "controller/ORVAppCreator.h"

namespace {

constexpr unsigned long APPS = 2000;

std::size_t RowBytes(unsigned long number) {
  const std::string package = bench::PackageId(number);
  return package.size() + 2 * (package.size() + 4) + 5 + bench::Variables(package).size();
}

void MemoryDaemon(benchmark::State& state) {
  bench::LeaveTheFakeAside();
  std::size_t rowBytes = 0;
  {
    const bench::Database db = bench::OpenWithTable(bench::StorePath());
    bench::Run(db.get(), "BEGIN; DELETE FROM appinfo;");
    for (unsigned long i = 0; i < APPS; ++i) {
      bench::Run(db.get(), bench::InsertSql(bench::PackageId(i)));
      rowBytes += RowBytes(i);
    }
    bench::Run(db.get(), "COMMIT");
  }
  ORVAppCreator* creator = ORVAppCreator::GetInstance();
  const std::size_t before = mallinfo2().uordblks;
  for (auto _ : state) {
    creator->LoadAndCreateAppInfo();
  }
  state.counters["heap_per_app"] = static_cast<double>(mallinfo2().uordblks - before) / APPS;
  state.counters["row_bytes"] = static_cast<double>(rowBytes) / APPS;
}

BENCHMARK(MemoryDaemon)->Name("memory/daemon")->Iterations(1)->UseRealTime();

}  // namespace
