// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// The privileged mount service. Both calls are synchronous and callable from any thread; the
/// return value says whether the service was reached, *result whether it did the work: 0 for done,
/// any other number for a failure. *result is untouched when the service was not reached.

/// command is what follows the name of the mount program: "-o <options> <image> <directory>". The
/// options are honoured exactly as given. length counts the bytes of command without a terminator.
int PS_Mount(const char* command, int length, int flags, int* result);
int PS_Umount(const char* path, int length, int flags, int* result);

#ifdef __cplusplus
}
#endif
