// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

namespace framework {

/// Copies the text into a field of a structure, which must be filled with zeros. A longer text is
/// truncated, so that the field stays terminated.
template <std::size_t Size>
void FillText(char (&field)[Size], const std::string& text) {
  std::memcpy(field, text.data(), std::min(text.size(), Size - 1));
}

}  // namespace framework
