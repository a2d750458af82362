// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "framework/hooks.h"

#include <atomic>

namespace framework {
namespace {

std::atomic<const Hooks*> g_hooks{nullptr};

}  // namespace

void SetHooks(const Hooks* hooks) {
  g_hooks.store(hooks, std::memory_order_release);
}

const Hooks* GetHooks() {
  return g_hooks.load(std::memory_order_acquire);
}

}  // namespace framework
