// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

namespace support {

/// Waits until the condition holds, on the calling thread. On a deadline the failure names what was
/// missing: EXPECT_TRUE(WaitFor([&] { return done; }, "the worker's end")). The clock is the
/// machine's own, whatever a fake says.
testing::AssertionResult WaitFor(const std::function<bool()>& condition, const std::string& what,
                                 std::chrono::milliseconds deadline = std::chrono::seconds(20));

}  // namespace support
