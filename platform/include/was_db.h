// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// One entry of the web-app service's list. Only the named fields are meaningful here; the layout
/// is that of the service and must not change.
typedef struct {
  char reserved_head[1024];
  char package_id[2064];  ///< NUL-terminated
  int32_t kind;           ///< 2 for an installed web app
  char reserved_mid[88];
  int32_t gone;  ///< non-zero for an app that is no longer there
  char reserved_tail[28];
} was_app_list_item_s;

/// One web app as the service knows it.
typedef struct {
  char widget_id[896];     ///< NUL-terminated
  char app_tizen_id[896];  ///< NUL-terminated
} was_app_info_s;

/// On 0 *list is one malloc'ed array of *count items that the caller frees with free(); it may be
/// null when *count is 0. On any other result both are untouched.
int was_get_all_app_list(was_app_list_item_s** list, int* count);
/// 0 and a filled *info, or another number for an app that the service does not know.
int was_get_app_info_by_tizenid(const char* app_tizen_id, was_app_info_s* info);

#ifdef __cplusplus
}
#endif
