// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The entry point of the sweep. Unlike other test programs it needs the sandbox even to list its
// tests, because running the paths determines which tests exist.
#include <gmock/gmock.h>

#include "fault/child.h"
#include "support/sandbox.h"

/// For a build with ThreadSanitizer, which would wait a second for the threads of each of thousands
/// of processes, but a daemon's threads do not end before its process.
extern "C" const char* __tsan_default_options() {
  return "atexit_sleep_ms=0";
}

int main(int argc, char** argv) {
  support::EnterSandbox(argv);
  fault::CarryOutTheRequest(argc, argv);
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
