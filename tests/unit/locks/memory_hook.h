// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>

/// A program with memory_hook.cpp can stop at every allocation and release of a thread.
namespace memory_hook {

/// Runs the operation, and `interruption` before each operator new and delete that the calling
/// thread executes meanwhile. The interruption itself is not interrupted.
void RunInterrupted(const std::function<void()>& operation,
                    const std::function<void()>& interruption);

}  // namespace memory_hook
