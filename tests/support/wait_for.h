// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

namespace support {

/// Waits on the calling thread until the condition is true. At the deadline the failure names what
/// is missing: EXPECT_TRUE(WaitFor([&] { return done; }, "the worker's end")). The clock is the
/// machine's clock, not a fake one.
testing::AssertionResult WaitFor(const std::function<bool()>& condition, const std::string& what,
                                 std::chrono::milliseconds deadline = std::chrono::seconds(20));

}  // namespace support
