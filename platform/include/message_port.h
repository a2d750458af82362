// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdbool.h>

#include "bundle.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
  MESSAGE_PORT_ERROR_NONE = 0,
  MESSAGE_PORT_ERROR_IO_ERROR = -5,
  MESSAGE_PORT_ERROR_OUT_OF_MEMORY = -12,
  MESSAGE_PORT_ERROR_INVALID_PARAMETER = -22,
  MESSAGE_PORT_ERROR_PORT_NOT_FOUND = -18612223,
  MESSAGE_PORT_ERROR_CERTIFICATE_NOT_MATCH = -18612222,
  MESSAGE_PORT_ERROR_MAX_EXCEEDED = -18612221
} message_port_error_e;

/// Delivered on the thread of the GLib main loop, in the order of arrival. remote_app_id comes
/// from the platform, never from the message. remote_port is null when the
/// sender named no port for replies. The platform frees message after the call.
typedef void (*message_port_message_cb)(int local_port_id, const char* remote_app_id,
                                        const char* remote_port, bool trusted_remote_port,
                                        bundle* message, void* user_data);

/// A positive port id, or a negative message_port_error_e. Registering a name again replaces the
/// callback and returns the same id.
int message_port_register_local_port(const char* local_port, message_port_message_cb callback,
                                     void* user_data);
/// The message is copied; the caller keeps its bundle. An unknown port is
/// MESSAGE_PORT_ERROR_PORT_NOT_FOUND, a null argument MESSAGE_PORT_ERROR_INVALID_PARAMETER.
int message_port_send_message(const char* remote_app_id, const char* remote_port, bundle* message);
/// The same; the receiver can reply to the local port with this id.
int message_port_send_message_with_local_port(const char* remote_app_id, const char* remote_port,
                                              bundle* message, int local_port_id);

#ifdef __cplusplus
}
#endif
