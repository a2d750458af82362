// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "support/wait_for.h"

#include <ctime>

namespace support {
namespace {

std::chrono::nanoseconds Now() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

void LetOthersRun() {
  const timespec pause{0, 500000};
  nanosleep(&pause, nullptr);
}

}  // namespace

testing::AssertionResult WaitFor(const std::function<bool()>& condition, const std::string& what,
                                 std::chrono::milliseconds deadline) {
  const auto end = Now() + deadline;
  while (!condition()) {
    if (Now() >= end) {
      return testing::AssertionFailure()
             << "still missing after " << deadline.count() << " ms: " << what;
    }
    LetOthersRun();
  }
  return testing::AssertionSuccess();
}

}  // namespace support
