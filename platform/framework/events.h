// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace framework {

/// Event types of the framework itself. FCTask::t_OnEvent() consumes them.
constexpr unsigned int EVENT_SUSPEND = 0x7FFF0001;
constexpr unsigned int EVENT_RESUME = 0x7FFF0002;

}  // namespace framework
