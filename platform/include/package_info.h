// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct package_info_s* package_info_h;

typedef enum {
  PACKAGE_INFO_ALLAPP = 0,
  PACKAGE_INFO_UIAPP = 1,
  PACKAGE_INFO_SERVICEAPP = 2
} package_info_app_component_type_e;

/// Called once per application of the package. app_id is valid only during the call. False ends
/// the walk.
typedef bool (*package_info_app_cb)(package_info_app_component_type_e comp_type, const char* app_id,
                                    void* user_data);

/// Synchronous, on the caller's thread, in the order of the package's manifest. Ending the walk
/// early is a success.
int package_info_foreach_app_from_package(package_info_h package_info,
                                          package_info_app_component_type_e comp_type,
                                          package_info_app_cb callback, void* user_data);
/// *version is malloc'ed and owned by the caller.
int package_info_get_version(package_info_h package_info, char** version);
int package_info_destroy(package_info_h package_info);

#ifdef __cplusplus
}
#endif
