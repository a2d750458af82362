// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <ostream>

/// What the process holds at a moment. For tests that a path gives back what it took.
namespace support {

struct Resources {
  long descriptors = 0;
  /// Allocations inside SQLite: prepared statements, result texts, page buffers.
  long sqliteBlocks = 0;
  /// Heap blocks of the whole process. 0 in a build with a sanitizer, which has its own allocator.
  long heapBlocks = 0;
};

inline bool operator==(const Resources& left, const Resources& right) {
  return left.descriptors == right.descriptors && left.sqliteBlocks == right.sqliteBlocks &&
         left.heapBlocks == right.heapBlocks;
}
std::ostream& operator<<(std::ostream& stream, const Resources& resources);

/// Any thread. Threads that work meanwhile make the result meaningless.
Resources CountResources();

/// Whether CountResources() counts heap blocks in this build.
bool CountsHeapBlocks();

/// Runs the path a few times, so that caches are full, and then a few times more: the latter must
/// leave as much behind as `growth` says for each run. `forget` drops what the test itself gathers
/// (logs, recorded calls) and is not measured.
testing::AssertionResult LeavesNothingBehind(const std::function<void()>& path,
                                             const std::function<void()>& forget,
                                             const Resources& growth = {});

}  // namespace support
