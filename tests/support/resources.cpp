// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "support/resources.h"

#include <sqlite3.h>

#include <atomic>
#include <cstddef>
#include <filesystem>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ORV_OWN_ALLOCATOR 0
#else
#define ORV_OWN_ALLOCATOR 1
#endif

namespace {

constexpr int WARM_UPS = 3;
constexpr int RUNS = 4;

std::atomic<long> g_heapBlocks{0};

}  // namespace

#if ORV_OWN_ALLOCATOR
// The names under which the C library exports its own functions to a replacement allocator.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

void* malloc(std::size_t size) {
  void* block = __libc_malloc(size);
  g_heapBlocks += block != nullptr ? 1 : 0;
  return block;
}
void* calloc(std::size_t count, std::size_t size) {
  void* block = __libc_calloc(count, size);
  g_heapBlocks += block != nullptr ? 1 : 0;
  return block;
}
void* realloc(void* old, std::size_t size) {
  void* block = __libc_realloc(old, size);
  g_heapBlocks += old == nullptr && block != nullptr ? 1 : 0;
  g_heapBlocks -= old != nullptr && size == 0 ? 1 : 0;
  return block;
}
void free(void* block) {
  g_heapBlocks -= block != nullptr ? 1 : 0;
  __libc_free(block);
}
}
#endif

namespace support {

std::ostream& operator<<(std::ostream& stream, const Resources& resources) {
  return stream << resources.descriptors << " descriptors, " << resources.sqliteBlocks
                << " SQLite blocks, " << resources.heapBlocks << " heap blocks";
}

bool CountsHeapBlocks() {
  return ORV_OWN_ALLOCATOR != 0;
}

Resources CountResources() {
  Resources resources;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    ++resources.descriptors;
  }
  int current = 0;
  int highest = 0;
  sqlite3_status(SQLITE_STATUS_MALLOC_COUNT, &current, &highest, 0);
  resources.sqliteBlocks = current;
  resources.heapBlocks = g_heapBlocks;
  return resources;
}

testing::AssertionResult LeavesNothingBehind(const std::function<void()>& path,
                                             const std::function<void()>& forget,
                                             const Resources& growth) {
  const auto run = [&](int times) {
    for (int i = 0; i < times; ++i) {
      path();
    }
    forget();
    return CountResources();
  };
  run(WARM_UPS);
  const Resources before = run(1);
  const Resources after = run(RUNS);
  Resources expected = before;
  expected.descriptors += RUNS * growth.descriptors;
  expected.sqliteBlocks += RUNS * growth.sqliteBlocks;
  expected.heapBlocks += CountsHeapBlocks() ? RUNS * growth.heapBlocks : 0;
  if (after == expected) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << RUNS << " runs left more or less behind than expected: before: " << before
         << "; expected: " << expected << "; found: " << after;
}

}  // namespace support
