// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace desk::cli {

/// What a result of app_control or app_operation means: "launch rejected", or "code N".
std::string AppControlResultName(int code);

}  // namespace desk::cli
