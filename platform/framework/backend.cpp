// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "framework/backend.h"

#include <atomic>

namespace framework {
namespace {

std::atomic<platform::Backend*> g_backend{nullptr};

}  // namespace

void SetBackend(platform::Backend* backend) {
  g_backend.store(backend, std::memory_order_release);
}

platform::Backend* GetBackend() {
  return g_backend.load(std::memory_order_acquire);
}

}  // namespace framework
