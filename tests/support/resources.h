// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <ostream>

/// The resources that the process holds now. For tests that a path releases what it acquires.
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

/// Any thread. The result is meaningless while other threads are working.
Resources CountResources();

/// Whether CountResources() counts heap blocks in this build.
bool CountsHeapBlocks();

/// Runs the path a few times to fill caches, then a few times more: each of these runs must leave
/// exactly `growth` behind. `forget` drops what the test itself collects
/// (logs, recorded calls) and is not measured.
testing::AssertionResult LeavesNothingBehind(const std::function<void()>& path,
                                             const std::function<void()>& forget,
                                             const Resources& growth = {});

}  // namespace support
