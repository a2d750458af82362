// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bundle.h>

#include <vector>

#include "fake/control/ports.h"

namespace fake {

/// A bundle that is not counted as an open handle; for the platform's own messages.
bundle* NewPlatformBundle(const std::vector<BundleEntry>& entries);
void FreePlatformBundle(bundle* b);
/// "bundle#1" or "null".
std::string BundleText(const bundle* b);

}  // namespace fake
