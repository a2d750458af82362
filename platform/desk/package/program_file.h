// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace desk {

struct ProgramTrouble {
  std::string reason;  ///< for example "its interpreter /bin/sh\r does not exist"
  std::string fix;     ///< one sentence
};

/// Why the kernel would refuse to run the file, told by its first line; nothing when it would
/// start it. Execute permission is not checked. Callable from any thread.
std::optional<ProgramTrouble> WhyNotRunnable(const std::string& path);

}  // namespace desk
