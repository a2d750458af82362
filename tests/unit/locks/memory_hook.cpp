// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "unit/locks/memory_hook.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local const std::function<void()>* t_interruption = nullptr;

void Interrupt() {
  if (const auto* const interruption = std::exchange(t_interruption, nullptr)) {
    (*interruption)();
    t_interruption = interruption;
  }
}

}  // namespace

namespace memory_hook {

void RunInterrupted(const std::function<void()>& operation,
                    const std::function<void()>& interruption) {
  t_interruption = &interruption;
  operation();
  t_interruption = nullptr;
}

}  // namespace memory_hook

void* operator new(std::size_t size) {
  Interrupt();
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void operator delete(void* block) noexcept {
  if (block == nullptr) return;
  Interrupt();
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}
