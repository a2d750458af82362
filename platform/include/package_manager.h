// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "package_info.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Installed packages and their events. All calls are synchronous, callable from any
/// thread, and return a package_manager_error_e; a null argument or a handle that was destroyed is
/// PACKAGE_MANAGER_ERROR_INVALID_PARAMETER.
typedef struct package_manager_s* package_manager_h;

/// Also the results of the package_info family. PACKAGE_MANAGER_ERROR_IO_ERROR: the platform's
/// package service does not answer.
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

/// Each install, uninstall and update sends started, any number of processing, and one completed or
/// failed; the events of two packages may alternate. When an install or update is completed, the
/// new package and its apps can be looked up. When an uninstall is completed, they no longer can.
typedef enum {
  PACKAGE_MANAGER_EVENT_STATE_STARTED = 0,
  PACKAGE_MANAGER_EVENT_STATE_PROCESSING = 1,
  PACKAGE_MANAGER_EVENT_STATE_COMPLETED = 2,
  PACKAGE_MANAGER_EVENT_STATE_FAILED = 3
} package_manager_event_state_e;

/// type is the kind of package ("wgt"), package its id, progress runs from 0 to 100 percent; error
/// is meaningful only in the state failed. The strings are valid only during the call. Delivered
/// on the thread of the GLib main loop, in order, and not before that loop runs. The
/// events of all packages are delivered, except those before the registration.
typedef void (*package_manager_event_cb)(const char* type, const char* package,
                                         package_manager_event_type_e event_type,
                                         package_manager_event_state_e event_state, int progress,
                                         package_manager_error_e error, void* user_data);

/// On success *manager is owned by the caller until package_manager_destroy(); on an error it is
/// untouched.
int package_manager_create(package_manager_h* manager);
/// Ends the handle's events as package_manager_unset_event_cb() does.
int package_manager_destroy(package_manager_h manager);
/// One callback per handle; a second call replaces the first. user_data stays the caller's and must
/// outlive the registration.
int package_manager_set_event_cb(package_manager_h manager, package_manager_event_cb callback,
                                 void* user_data);
/// After it has returned on the main-loop thread, no callback of this handle begins; on another
/// thread, one may be about to begin. May be called from within the callback.
int package_manager_unset_event_cb(package_manager_h manager);
/// On success *package_info is owned by the caller until package_info_destroy(), and is a snapshot:
/// a later update or uninstall does not change it. A package that is not installed is
/// PACKAGE_MANAGER_ERROR_NO_SUCH_PACKAGE; *package_info is untouched then.
int package_manager_get_package_info(const char* package, package_info_h* package_info);

#ifdef __cplusplus
}
#endif
