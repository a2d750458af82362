// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <dlog.h>

/// One log record each. The format is a string literal that begins with its level word ("[Info] ",
/// "[Debug] ", "[ERROR] "), so the text in the call is the text in the log. The head (source path,
/// function, line) and the newline are added here. Callable from any thread.
#define ORV_LOG_INFO(...) ORV_LOG(DLOG_INFO, __VA_ARGS__, "\n")
#define ORV_LOG_DEBUG(...) ORV_LOG(DLOG_INFO, __VA_ARGS__, "\n")
#define ORV_LOG_ERROR(...) ORV_LOG(DLOG_ERROR, __VA_ARGS__, "\n")

/// The newline is the last argument: standard C++ requires an argument for the ellipsis.
#define ORV_LOG(priority, format, ...)                                                      \
  __dlog_print(LOG_ID_MAIN, priority, "orv-enabler", "%s: %s(%d) > " format "%s", __FILE__, \
               __func__, __LINE__, __VA_ARGS__)
