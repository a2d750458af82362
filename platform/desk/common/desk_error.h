// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>

namespace desk {

/// An error for the user, in one line: what failed, why, what to do. On the bus the code is the
/// last part of the error's name.
class DeskError : public std::runtime_error {
 public:
  static constexpr const char* FAILED = "Failed";
  static constexpr const char* USAGE = "Usage";
  static constexpr const char* NOT_FOUND = "NotFound";
  static constexpr const char* TIMEOUT = "Timeout";
  static constexpr const char* NO_SUCH_METHOD = "NoSuchMethod";
  /// desk-tv is not running or has ended. Never sent over the bus.
  static constexpr const char* NO_TV = "NoTv";

  DeskError(std::string code, const std::string& message)
      : std::runtime_error(message), m_code(std::move(code)) {}

  const std::string& Code() const { return m_code; }

 private:
  std::string m_code;
};

}  // namespace desk
