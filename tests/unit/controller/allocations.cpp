// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "unit/controller/allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local bool t_failNext = false;
thread_local bool t_watchNext = false;
std::atomic<void*> g_watched{nullptr};
std::atomic<bool> g_watchedIsFree{false};

void Free(void* block) {
  if (block != nullptr && block == g_watched) {
    g_watched = nullptr;
    g_watchedIsFree = true;
  }
  std::free(block);
}

}  // namespace

namespace allocations {

void FailNext() {
  t_failNext = true;
}

bool CancelFailure() {
  return std::exchange(t_failNext, false);
}

void Watch(void* block) {
  g_watchedIsFree = false;
  g_watched = block;
}

void WatchNext() {
  t_watchNext = true;
}

bool WatchedBlockIsFree() {
  return g_watchedIsFree;
}

void* WatchedBlock() {
  return g_watched;
}

}  // namespace allocations

void* operator new(std::size_t size) {
  void* block = allocations::CancelFailure() ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  if (std::exchange(t_watchNext, false)) {
    allocations::Watch(block);
  }
  return block;
}

void operator delete(void* block) noexcept {
  Free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  Free(block);
}
