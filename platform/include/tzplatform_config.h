// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// Only the two directories that this project uses.
enum tzplatform_variable {
  /// The content of installed packages: "<dir>/<package>/res/" holds a package's resources.
  TZ_USER_APP = 27,
  /// One writable directory per package, for the data that a package keeps between runs.
  TZ_SYS_RW_APP = 61
};

/// The directory without a trailing "/", or null when unknown. Owned by the platform, valid for the
/// life of the process. Callable from static initialisers.
const char* tzplatform_getenv(enum tzplatform_variable id);

#ifdef __cplusplus
}
#endif
