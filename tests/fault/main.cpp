// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The entry of the sweep. Unlike other test programs it needs the sandbox also for a list of its
// tests, since which tests there are is found out by travelling the roads.
#include <gmock/gmock.h>

#include "fault/child.h"
#include "support/sandbox.h"

int main(int argc, char** argv) {
  support::EnterSandbox(argv);
  fault::CarryOutTheOrder(argc, argv);
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
