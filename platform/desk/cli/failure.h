// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>

namespace desk {

/// What `tv` ends with. Scripts rely on the numbers.
enum class Exit { Done = 0, Failed = 1, Usage = 2, NotRunning = 3, NotFound = 4, TimedOut = 5 };

/// Ends a command. The text is one line for a person: what, why, what to do. Whoever started the
/// command prints it once, after "tv: ".
class Failure : public std::runtime_error {
 public:
  Failure(Exit code, const std::string& text) : std::runtime_error(text), m_code(code) {}
  Exit Code() const { return m_code; }

 private:
  Exit m_code;
};

}  // namespace desk
