// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef enum { LOG_ID_MAIN = 0 } log_id_t;

typedef enum {
  DLOG_VERBOSE = 2,
  DLOG_DEBUG = 3,
  DLOG_INFO = 4,
  DLOG_WARN = 5,
  DLOG_ERROR = 6,
  DLOG_FATAL = 7
} log_priority;

/// One record. Callable from any thread at any time, never blocks for longer than one write and
/// never fails loudly: a lost record is the only outcome of an error. Returns the bytes written or
/// a negative number.
int __dlog_print(log_id_t log_id, int prio, const char* tag, const char* fmt, ...)
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif
