// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct app_info_s* app_info_h;

/// Called once per metadata entry. The strings belong to the caller of the callback and are valid
/// only during the call. False ends the walk.
typedef bool (*app_info_metadata_cb)(const char* metadata_key, const char* metadata_value,
                                     void* user_data);

/// Results are app_manager_error_e values. An unknown app is APP_MANAGER_ERROR_NO_SUCH_APP.
int app_info_create(const char* app_id, app_info_h* app_info);
int app_info_destroy(app_info_h app_info);
/// Synchronous: every callback has returned before this call does. Entries come in the order of the
/// package's manifest. Ending the walk early is a success.
int app_info_foreach_metadata(app_info_h app_info, app_info_metadata_cb callback, void* user_data);

#ifdef __cplusplus
}
#endif
