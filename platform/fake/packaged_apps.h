// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace fake {

/// An installed package has this app.
bool IsPackagedApp(const std::string& app);

}  // namespace fake
