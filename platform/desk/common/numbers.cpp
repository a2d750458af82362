// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/numbers.h"

#include <charconv>

namespace desk {

std::optional<std::uint64_t> ReadUnsigned(const std::string& text) {
  const bool hex = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
  const char* const start = text.data() + (hex ? 2 : 0);
  const char* const end = text.data() + text.size();
  std::uint64_t number = 0;
  const auto [stop, error] = std::from_chars(start, end, number, hex ? 16 : 10);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<std::int64_t> ReadNumber(const std::string& text) {
  const bool negative = text.compare(0, 1, "-") == 0;
  const bool sign = negative || text.compare(0, 1, "+") == 0;
  const auto size = ReadUnsigned(sign ? text.substr(1) : text);
  const std::uint64_t most = negative ? std::uint64_t{INT64_MAX} + 1 : std::uint64_t{INT64_MAX};
  if (!size || *size > most) {
    return std::nullopt;
  }
  return static_cast<std::int64_t>(negative ? 0 - *size : *size);
}

}  // namespace desk
