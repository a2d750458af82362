// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// Which application serves a named operation. All three are synchronous, callable from any
/// thread, and return 0 or an app_control error code.

/// *app_id is malloc'ed and owned by the caller; it stays null when no app serves the operation
/// and the call still succeeded. Not touched on an error.
int app_operation_get_current_app(const char* operation, char** app_id);
/// An empty app_id is valid and means that no real application serves the operation.
int app_operation_set_current_app(const char* operation, const char* app_id);
/// Restores the platform's own app for the operation.
int app_operation_reset_current_app(const char* operation);

#ifdef __cplusplus
}
#endif
