// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdbool.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Directory that only this application writes, ending in "/". Never shared with other packages.
/// Returns a malloc'ed string that the caller frees, or null when the process has no application
/// context. Callable from any thread and before the main loop runs (static initialisers included).
char* app_get_data_path(void);

/// Directory whose content other applications may read, ending in "/". Same ownership, threads and
/// failure as app_get_data_path().
char* app_get_shared_data_path(void);

#ifdef __cplusplus
}
#endif
