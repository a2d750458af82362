// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

#ifndef APP_CONTROL_OPERATION_DEFAULT
#define APP_CONTROL_OPERATION_DEFAULT "http://tizen.org/appcontrol/operation/default"
#endif

/// Results of the app_control family. Those written in hexadecimal are negative as an int.
typedef enum {
  APP_CONTROL_ERROR_NONE = 0,
  APP_CONTROL_ERROR_IO_ERROR = -5,
  APP_CONTROL_ERROR_OUT_OF_MEMORY = -12,
  APP_CONTROL_ERROR_PERMISSION_DENIED = -13,
  APP_CONTROL_ERROR_INVALID_PARAMETER = -22,
  APP_CONTROL_ERROR_APP_NOT_FOUND = (int)0xFEF00021,
  APP_CONTROL_ERROR_LAUNCH_REJECTED = (int)0xFEF00023,
  APP_CONTROL_ERROR_LAUNCH_FAILED = (int)0xFEF00024,
  APP_CONTROL_ERROR_TIMED_OUT = (int)0xC0000001
} app_control_error_e;

typedef struct app_control_s* app_control_h;

typedef enum {
  APP_CONTROL_RESULT_APP_STARTED = 1,
  APP_CONTROL_RESULT_SUCCEEDED = 0,
  APP_CONTROL_RESULT_FAILED = -1,
  APP_CONTROL_RESULT_CANCELED = -2
} app_control_result_e;

typedef void (*app_control_reply_cb)(app_control_h request, app_control_h reply,
                                     app_control_result_e result, void* user_data);

/// Creates an empty request. On success *app_control is owned by the caller until
/// app_control_destroy(); on an error it is set to null.
int app_control_create(app_control_h* app_control);
/// Returns APP_CONTROL_ERROR_INVALID_PARAMETER for null.
int app_control_destroy(app_control_h app_control);
/// The strings are copied.
int app_control_set_app_id(app_control_h app_control, const char* app_id);
int app_control_set_operation(app_control_h app_control, const char* operation);
int app_control_add_extra_data(app_control_h app_control, const char* key, const char* value);
/// Synchronous: returns when the launcher has accepted or refused the request, not when the app is
/// ready. reply_cb may be null. The handle may be destroyed directly afterwards.
int app_control_send_launch_request(app_control_h app_control, app_control_reply_cb reply_cb,
                                    void* user_data);

#ifdef __cplusplus
}
#endif
