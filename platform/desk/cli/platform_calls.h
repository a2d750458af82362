// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace desk::cli {

/// The platform calls that `tv fail` can make fail, named as in their headers, in ascending order.
/// A fault with any other name would never take effect.
const std::vector<std::string>& PlatformCalls();

/// The calls that cannot fail: they end an object, and their callers free it afterwards.
const std::vector<std::string>& CallsThatCannotFail();

}  // namespace desk::cli
