// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Installing packaged data, against two programs that unpack the same archive: processor time, user
// and system together.
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/bench_place.h"
#include "fake/control/fake.h"
#include "utils/PackagedData.h"

extern char** environ;

namespace {

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

double ProcessorTime(int who) {
  rusage usage{};
  getrusage(who, &usage);
  return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

void Spawn(const std::vector<std::string>& command) {
  std::vector<char*> argv;
  for (const std::string& word : command) {
    argv.push_back(const_cast<char*>(word.c_str()));
  }
  argv.push_back(nullptr);
  pid_t pid = 0;
  int status = 0;
  if (posix_spawnp(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0 ||
      waitpid(pid, &status, 0) != pid || status != 0) {
    std::fprintf(stderr, "orv_bench: %s failed\n", argv[0]);
    std::exit(1);
  }
}

/// Replaces the mount: places the archive in the mount point.
int LinkArchive(const fake::Mount& mount) {
  std::filesystem::remove(mount.directory + "/orv_app.zip");
  std::filesystem::create_symlink(bench::ArchivePath(), mount.directory + "/orv_app.zip");
  return 0;
}

void UnpackDaemon(benchmark::State& state) {
  bench::LeaveTheFakeAside();
  fake::SetMountHandler(LinkArchive);
  bench::StorePath();
  for (auto _ : state) {
    const double before = ProcessorTime(RUSAGE_SELF);
    if (!FileSystemUtils::InstallPackagedData("bench", "bench.App", "ch_feeder_standard", 1,
                                              false)) {
      state.SkipWithError("InstallPackagedData() return false");
    }
    state.SetIterationTime(ProcessorTime(RUSAGE_SELF) - before);
    std::filesystem::remove_all(bench::Place() +
                                "/com.kalmora.tv.orv-enabler/shared/data/hbbtv_app");
  }
}

void UnpackWith(benchmark::State& state, const std::vector<std::string>& command) {
  const std::string target = bench::Place() + "/unpacked";
  for (auto _ : state) {
    std::filesystem::create_directories(target);
    const double before = ProcessorTime(RUSAGE_CHILDREN);
    Spawn(command);
    state.SetIterationTime(ProcessorTime(RUSAGE_CHILDREN) - before);
    std::filesystem::remove_all(target);
  }
}

void UnpackUnzip(benchmark::State& state) {
  UnpackWith(state, {"unzip", "-qq", bench::ArchivePath(), "-d", bench::Place() + "/unpacked"});
}

void UnpackBsdtar(benchmark::State& state) {
  UnpackWith(state,
             {"bsdtar", "-x", "-f", bench::ArchivePath(), "-C", bench::Place() + "/unpacked"});
}

BENCHMARK(UnpackDaemon)->Name("unpack/daemon")->Iterations(1)->UseManualTime();
BENCHMARK(UnpackUnzip)->Name("unpack/unzip")->Iterations(1)->UseManualTime();
BENCHMARK(UnpackBsdtar)->Name("unpack/bsdtar")->Iterations(1)->UseManualTime();

}  // namespace
