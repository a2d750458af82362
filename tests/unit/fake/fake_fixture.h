// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fake/control/calls.h"

/// Records what the callbacks of a test received, in order.
inline std::vector<std::string>& Told() {
  static std::vector<std::string> s_told;
  return s_told;
}

/// Resets the fake before and after the test.
class FakeTest : public testing::Test {
 protected:
  FakeTest() { fake::Reset(); }
  ~FakeTest() override {
    fake::Reset();
    Told().clear();
  }
};
