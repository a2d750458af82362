// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The entry point of every GoogleTest program.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

#include "support/sandbox.h"

namespace {

bool OnlyListsOrHelps(int argc, char** argv) {
  return std::any_of(argv + 1, argv + argc, [](std::string_view argument) {
    return argument == "--gtest_list_tests" || argument == "--help" || argument == "-h";
  });
}

}  // namespace

int main(int argc, char** argv) {
  if (!OnlyListsOrHelps(argc, argv)) {
    support::EnterSandbox(argv);
  }
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
