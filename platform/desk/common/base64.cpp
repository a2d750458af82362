// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/base64.h"

#include <memory>

#include "desk/common/gio_ptr.h"

namespace desk {

std::string ToBase64(const std::string& bytes) {
  const TextPtr text(g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size()));
  return text.get();
}

std::string FromBase64(const std::string& text) {
  gsize size = 0;
  const std::unique_ptr<guchar, MemoryFree> bytes(g_base64_decode(text.c_str(), &size));
  return {reinterpret_cast<const char*>(bytes.get()), size};
}

}  // namespace desk
