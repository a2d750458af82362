// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <app_context.h>

#include <string>

/// The forced end of a service app. Callable from any thread; failures are log lines.
namespace ServiceAppTermination {

/// The text of an app-manager result for log lines; empty for an unknown code.
const char* GetErrorText(int error);

/// Asks the app manager to end the app of the context, then kills its process, without waiting for
/// its end. True when the kill succeeded. Destroys the context, unless the app manager refuses.
/// rServiceID is only logged.
bool TerminateApp(app_context_h hContext, const std::string& rServiceID);

}  // namespace ServiceAppTermination
