// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace desk {

/// Brings the calls into the task framework under the journal and the fault table, in a process
/// that has either. Only the first call does something.
void HookFramework();

}  // namespace desk
