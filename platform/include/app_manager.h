// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdbool.h>

#include "app_context.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Results of the app_manager, app_context and app_info families, whose calls are all synchronous
/// and callable from any thread. APP_MANAGER_ERROR_INVALID_PARAMETER: a null argument, or a handle
/// that was destroyed. APP_MANAGER_ERROR_IO_ERROR: the platform does not answer.
/// APP_MANAGER_ERROR_REQUEST_FAILED: it could not end the app.
typedef enum {
  APP_MANAGER_ERROR_NONE = 0,
  APP_MANAGER_ERROR_INVALID_PARAMETER = -22,
  APP_MANAGER_ERROR_OUT_OF_MEMORY = -12,
  APP_MANAGER_ERROR_IO_ERROR = -5,
  APP_MANAGER_ERROR_NO_SUCH_APP = -17891327,
  APP_MANAGER_ERROR_DB_FAILED = -17891325,
  APP_MANAGER_ERROR_INVALID_PACKAGE = -17891324,
  APP_MANAGER_ERROR_APP_NO_RUNNING = -17891323,
  APP_MANAGER_ERROR_REQUEST_FAILED = -17891322,
  APP_MANAGER_ERROR_PERMISSION_DENIED = -13,
  APP_MANAGER_ERROR_NOT_SUPPORTED = -1073741822
} app_manager_error_e;

/// Whether the app has a process now; it may have ended when the call returns. *running is written
/// only on success. An unknown app id is not an error: *running becomes false.
int app_manager_is_running(const char* app_id, bool* running);
/// On success *app_context is owned by the caller until app_context_destroy(), and its pid is that
/// of the app's present process, also after a restart of the app. *app_context is untouched on an
/// error: APP_MANAGER_ERROR_APP_NO_RUNNING for an app without a process,
/// APP_MANAGER_ERROR_NO_SUCH_APP for an unknown one.
int app_manager_get_app_context(const char* app_id, app_context_h* app_context);

#ifdef __cplusplus
}
#endif
