// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bundle.h>

#include <vector>

#include "call/value.h"
#include "fake/control/ports.h"

namespace fake {

/// A bundle for a message of the platform, which the receiver cannot free.
bundle* NewPlatformBundle(const std::vector<BundleEntry>& entries);
void FreePlatformBundle(bundle* b);
/// For the record of a call.
platform::Value DescribeBundle(bundle* b);

}  // namespace fake
