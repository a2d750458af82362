// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/checks/scratch_directory.h"

#include <stdlib.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "desk/common/desk_error.h"

namespace desk {

ScratchDirectory::ScratchDirectory() {
  const char* base = getenv("TMPDIR");
  m_path = std::string(base == nullptr || *base == '\0' ? "/tmp" : base) + "/tv-check-XXXXXX";
  if (mkdtemp(m_path.data()) == nullptr) {
    throw DeskError(DeskError::FAILED, "cannot create " + m_path + ": " + std::strerror(errno));
  }
}

ScratchDirectory::~ScratchDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

}  // namespace desk
