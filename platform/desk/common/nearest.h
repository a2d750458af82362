// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace desk {

/// The word of the list that differs least from `word`, or an empty text when none is close. For
/// "did you mean" in messages. Callable from any thread.
std::string Nearest(const std::string& word, const std::vector<std::string>& list);

}  // namespace desk
