// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A running application as it was when app_manager_get_app_context() returned.
typedef struct app_context_s* app_context_h;

int app_context_destroy(app_context_h app_context);
/// Must also accept a context that the same thread has just passed to app_context_destroy():
/// callers depend on it. A backend keeps the pid of a destroyed context readable, without touching
/// freed memory, or returns an error; *pid is untouched then.
int app_context_get_pid(app_context_h app_context, pid_t* pid);

#ifdef __cplusplus
}
#endif
