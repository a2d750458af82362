// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace desk {

/// The platform calls that can be made to fail, named as in their headers, in ascending order. A
/// fault under any other name would wait for ever without a word.
const std::vector<std::string>& PlatformCalls();

/// Those that cannot: when they return what they end has ended, and their callers rely on it.
const std::vector<std::string>& CallsThatCannotFail();

}  // namespace desk
