// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace desk {

/// A number of a command line: decimal, also with leading zeros, or hexadecimal after "0x", with an
/// optional sign. Nothing for any other text and for a number that does not fit.
std::optional<std::int64_t> ReadNumber(const std::string& text);

/// The same without a sign, up to 64 bits.
std::optional<std::uint64_t> ReadUnsigned(const std::string& text);

}  // namespace desk
