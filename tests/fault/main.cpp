// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The entry of the sweep. Unlike other test programs it needs the sandbox also for a list of its
// tests, since which tests there are is found out by travelling the roads.
#include <gmock/gmock.h>

#include "fault/child.h"
#include "support/sandbox.h"

/// Of a build under ThreadSanitizer. The threads of a daemon never end before its process does, and
/// each of thousands would be given a second to do so.
extern "C" const char* __tsan_default_options() {
  return "atexit_sleep_ms=0";
}

int main(int argc, char** argv) {
  support::EnterSandbox(argv);
  fault::CarryOutTheOrder(argc, argv);
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
