// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// From the install event to the finished run, against the same INSERTs in a bare loop.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/bench_place.h"
#include "controller/ORVInstaller.h"
#include "fake/control/fake.h"

namespace {

constexpr int INSTALLS = 200;

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

void SendInstall(ORVInstaller& installer, const std::string& package, bool wait) {
  FSEvent event;
  event.pReceiver = &installer;
  event.type = EVENT_PACKAGE_INSTALLED;
  event.P0 = new std::string(package);  // the handler owns it
  installer.Send(event, false, wait);
}

/// Makes packages available for install on the fake, and removes every trace of them afterwards.
class Packages {
 public:
  explicit Packages(int count) {
    for (int i = 0; i < count; ++i) {
      m_ids.push_back(bench::PackageId(NextNumber()));
      AddFeeder(m_ids.back());
    }
  }
  ~Packages() {
    for (const std::string& id : m_ids) {
      fake::RemovePackage(id);
      fake::RemoveWasPackage(id);
    }
    fake::ClearChannelRequests();
  }
  Packages(const Packages&) = delete;
  Packages& operator=(const Packages&) = delete;

  /// Waits for the last install; they are handled in order.
  void Install(ORVInstaller& installer) const {
    for (const std::string& id : m_ids) {
      SendInstall(installer, id, id == m_ids.back());
    }
  }

 private:
  std::vector<std::string> m_ids;
};

/// The installs of one iteration are queued together; the result is the time of one install.
void InstallDaemon(benchmark::State& state) {
  bench::StorePath();
  bench::LeaveTheFakeAside();
  ORVInstaller& installer = *ORVInstaller::GetInstance();
  const int together = static_cast<int>(state.range(0));
  while (state.KeepRunningBatch(together)) {
    state.PauseTiming();
    auto packages = std::make_unique<Packages>(together);
    state.ResumeTiming();
    packages->Install(installer);
    state.PauseTiming();
    packages.reset();
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

BENCHMARK(InstallDaemon)
    ->Name("install/daemon")
    ->Arg(1)
    ->Arg(INSTALLS)
    ->Iterations(INSTALLS)
    ->UseRealTime();
BENCHMARK(InstallFloor)->Name("install/floor")->Iterations(INSTALLS)->UseRealTime();

}  // namespace
