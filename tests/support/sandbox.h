// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace support {

/// Where the daemon and the tests find things at absolute paths. In the sandbox these are fresh
/// empty directories of this process, in memory, gone with it; everything else is read-only but for
/// the build's own directory. Returns when the process is in the sandbox already, or when
/// ORV_TEST_NO_SANDBOX=1 asks to run without one; otherwise the process executes itself anew in it.
/// Ends the process with 1 and a line on standard error when there is no sandbox to be had.
void EnterSandbox(char** argv);

/// Whether this process runs in the sandbox.
bool InSandbox();

}  // namespace support
