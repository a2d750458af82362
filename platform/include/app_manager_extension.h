// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "app_manager.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Asks the app to end (SIGTERM or its platform's equivalent) and returns without waiting for it.
int app_manager_terminate_app(app_context_h app_context);

#ifdef __cplusplus
}
#endif
