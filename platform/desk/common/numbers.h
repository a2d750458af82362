// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace desk {

/// Numbers as people write them on the desk's command lines: decimal, also with zeros in front, or
/// hexadecimal behind "0x"; a sign may stand before it. Nothing for any other text, and for what
/// does not fit.
std::optional<std::int64_t> ReadNumber(const std::string& text);

/// The same without a sign, as far as 64 bits go.
std::optional<std::uint64_t> ReadUnsigned(const std::string& text);

}  // namespace desk
