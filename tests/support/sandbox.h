// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace support {

/// A sandbox for the absolute paths that the daemon and the tests use. In it these are fresh, empty
/// directories of this process, in memory; everything else is read-only, except for the build
/// directory. Returns when the process already is in the sandbox, or when
/// ORV_TEST_NO_SANDBOX=1 is set; otherwise the process executes itself again in the sandbox.
/// Exits with 1 and a line on standard error when it cannot create a sandbox.
void EnterSandbox(char** argv);

/// Whether this process runs in the sandbox.
bool InSandbox();

}  // namespace support
