// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>

namespace desk {

/// What the desk's fault table orders for this use of the call: nothing, or the result to return,
/// which is usualFailure when the order names none. A process without a table has no faults.
/// Callable from any thread and from static initialisers.
std::optional<int> CheckFault(const char* call, int usualFailure);

}  // namespace desk
