// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// From the install event to the finished run, against the same INSERTs in a bare loop.
#include <benchmark/benchmark.h>

#include <string>

#include "bench/bench_place.h"
#include "controller/ORVInstaller.h"
#include "fake/control/fake.h"

namespace {

constexpr int kInstalls = 200;

unsigned long NextNumber() {
  static unsigned long s_number = 0;
  return s_number++;
}

void AddFeeder(const std::string& package) {
  const std::string prefix = ORV_METADATA_PREFIX;
  fake::App app;
  app.id = package + ".App";
  app.metadata = {{prefix + "orv_type/ch_feeder_standard", "standard"},
                  {prefix + "orv_data/channel_data_url", bench::ChannelUrl(package)},
                  {prefix + "orv_data/schedule_data_url", bench::ScheduleUrl(package)}};
  fake::AddPackage({package, "1.0.0", {app}});
  fake::AddWasApp({package, app.id, app.id});
}

void SendInstall(ORVInstaller& installer, const std::string& package) {
  FSEvent event;
  event.pReceiver = &installer;
  event.type = EVENT_PACKAGE_INSTALLED;
  event.P0 = new std::string(package);  // the handler owns it
  installer.Send(event, false, true);
}

void InstallDaemon(benchmark::State& state) {
  bench::StorePath();
  bench::LeaveTheFakeAside();
  ORVInstaller& installer = *ORVInstaller::GetInstance();
  for (auto _ : state) {
    state.PauseTiming();
    const std::string package = bench::PackageId(NextNumber());
    AddFeeder(package);
    state.ResumeTiming();
    SendInstall(installer, package);
    state.PauseTiming();
    fake::RemovePackage(package);
    fake::RemoveWasPackage(package);
    fake::ClearChannelRequests();
    state.ResumeTiming();
  }
}

void InstallFloor(benchmark::State& state) {
  const std::string path = bench::Place() + "/floor.db";
  const bench::Database db = bench::OpenWithTable(path);
  for (auto _ : state) {
    bench::Run(db.get(), bench::InsertSql(bench::PackageId(NextNumber())));
  }
}

BENCHMARK(InstallDaemon)->Name("install/daemon")->Iterations(kInstalls)->UseRealTime();
BENCHMARK(InstallFloor)->Name("install/floor")->Iterations(kInstalls)->UseRealTime();

}  // namespace
