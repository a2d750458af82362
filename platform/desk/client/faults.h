// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

namespace desk::client {

/// FaultTable::Check() in the desk's fault table. Nothing in a process without a table. Callable
/// from any thread and from static initialisers.
std::optional<int> CheckFault(const char* call, int usualFailure);

}  // namespace desk::client
