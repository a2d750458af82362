// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>

namespace desk::cli {

/// The exit codes of `tv`. Scripts depend on the numbers.
enum class Exit { Done = 0, Failed = 1, Usage = 2, NotRunning = 3, NotFound = 4, TimedOut = 5 };

/// Ends a command. The text is one line for the user: what failed, why, what to do. RunTv() prints
/// it once, after "tv: ".
class Failure : public std::runtime_error {
 public:
  Failure(Exit code, const std::string& text) : std::runtime_error(text), m_code(code) {}
  Exit Code() const { return m_code; }

 private:
  Exit m_code;
};

}  // namespace desk::cli
