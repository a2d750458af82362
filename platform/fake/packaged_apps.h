// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace fake {

/// True when an installed package contains this app.
bool IsPackagedApp(const std::string& app);

}  // namespace fake
