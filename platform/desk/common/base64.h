// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace desk {

std::string ToBase64(const std::string& bytes);

/// Characters outside the alphabet are skipped, as GLib does.
std::string FromBase64(const std::string& text);

}  // namespace desk
