// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "package_info.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct package_manager_s* package_manager_h;

typedef enum {
  PACKAGE_MANAGER_ERROR_NONE = 0,
  PACKAGE_MANAGER_ERROR_INVALID_PARAMETER = -22,
  PACKAGE_MANAGER_ERROR_OUT_OF_MEMORY = -12,
  PACKAGE_MANAGER_ERROR_IO_ERROR = -5,
  PACKAGE_MANAGER_ERROR_PERMISSION_DENIED = -13,
  PACKAGE_MANAGER_ERROR_NO_SUCH_PACKAGE = -18153361,
  PACKAGE_MANAGER_ERROR_SYSTEM_ERROR = -18153362
} package_manager_error_e;

typedef enum {
  PACKAGE_MANAGER_EVENT_TYPE_INSTALL = 0,
  PACKAGE_MANAGER_EVENT_TYPE_UNINSTALL = 1,
  PACKAGE_MANAGER_EVENT_TYPE_UPDATE = 2
} package_manager_event_type_e;

typedef enum {
  PACKAGE_MANAGER_EVENT_STATE_STARTED = 0,
  PACKAGE_MANAGER_EVENT_STATE_PROCESSING = 1,
  PACKAGE_MANAGER_EVENT_STATE_COMPLETED = 2,
  PACKAGE_MANAGER_EVENT_STATE_FAILED = 3
} package_manager_event_state_e;

/// type is the kind of package ("wgt"), progress runs from 0 to 100. The strings are valid only
/// during the call. Delivered on the thread of the GLib main loop, in order, and not before that
/// loop runs.
typedef void (*package_manager_event_cb)(const char* type, const char* package,
                                         package_manager_event_type_e event_type,
                                         package_manager_event_state_e event_state, int progress,
                                         package_manager_error_e error, void* user_data);

int package_manager_create(package_manager_h* manager);
int package_manager_destroy(package_manager_h manager);
/// One callback per handle; a second call replaces the first.
int package_manager_set_event_cb(package_manager_h manager, package_manager_event_cb callback,
                                 void* user_data);
/// After it returned no callback of this handle begins.
int package_manager_unset_event_cb(package_manager_h manager);
/// On success *package_info is owned by the caller and is a snapshot.
int package_manager_get_package_info(const char* package, package_info_h* package_info);

#ifdef __cplusplus
}
#endif
