// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// One change of a settings key. Owned by the platform, valid during the call.
typedef struct _keynode_t keynode_t;

typedef void (*vconf_callback_fn)(keynode_t* node, void* user_data);

/// 0 on success, -1 when the key is absent or of another type; *intval is untouched then.
int vconf_get_int(const char* in_key, int* intval);
/// A malloc'ed string that the caller frees, or null when the key is absent or of another type.
char* vconf_get_str(const char* in_key);
/// Creates the key when it is absent. Returns when the value is stored; all registered callbacks
/// run afterwards, also when the value stays the same.
int vconf_set_int(const char* in_key, int intval);
int vconf_set_str(const char* in_key, const char* strval);

/// The callback runs for every later set of the key, in order, on the thread of the GLib main loop.
/// It does not run for an earlier set. One registration per pair of key and
/// function: a second one replaces the user data. Callable from any thread.
int vconf_notify_key_changed(const char* in_key, vconf_callback_fn cb, void* user_data);
/// After it has returned on the main-loop thread, the callback does not begin again; on another
/// thread, a callback that has begun may still be running. -1 when there was no such registration.
/// May be called from within the callback.
int vconf_ignore_key_changed(const char* in_key, vconf_callback_fn cb);

/// The value of this change, not the present one.
int vconf_keynode_get_int(keynode_t* keynode);
/// Owned by the node. Null when the key is not a string or was removed.
char* vconf_keynode_get_str(keynode_t* keynode);

#ifdef __cplusplus
}
#endif
