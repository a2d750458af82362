// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Part of the daemon's library in the build of tests/mutation/sample: records which code a test
// executes.
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

extern "C" {
/// The start address of this library in memory; set by the linker.
extern const char __ehdr_start __attribute__((visibility("hidden")));
void __sanitizer_cov_trace_pc();
}

namespace {

constexpr std::uintptr_t LARGEST_LIBRARY = std::uintptr_t{1} << 24U;

std::atomic<bool> g_seen[LARGEST_LIBRARY];
std::atomic<int> g_file{-2};  // -2: not decided yet; -1: tracing is off

int File() {
  if (g_file == -2) {
    const char* path = std::getenv("ORV_TRACE");
    g_file = path == nullptr ? -1 : open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
  }
  return g_file;
}

}  // namespace

/// The compiler calls this at the beginning of each basic block of the library. Any thread. One
/// line of the file that ORV_TRACE names is the offset of a block that was executed.
void __sanitizer_cov_trace_pc() {
  const auto begin = reinterpret_cast<std::uintptr_t>(&__ehdr_start);
  const auto offset = reinterpret_cast<std::uintptr_t>(__builtin_return_address(0)) - begin;
  if (File() < 0 || offset >= LARGEST_LIBRARY || g_seen[offset].exchange(true)) {
    return;
  }
  char line[32];
  const int length =
      std::snprintf(line, sizeof line, "0x%lx\n", static_cast<unsigned long>(offset - 1));
  if (write(g_file, line, static_cast<std::size_t>(length)) != length) {
    std::abort();
  }
}
