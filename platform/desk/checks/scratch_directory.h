// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace desk {

/// A new directory in the system's directory for temporary files ($TMPDIR), deleted with the
/// object. One thread at a time.
class ScratchDirectory {
 public:
  /// Throws DeskError (Failed) when it cannot be created.
  ScratchDirectory();
  ~ScratchDirectory();
  ScratchDirectory(const ScratchDirectory&) = delete;
  ScratchDirectory& operator=(const ScratchDirectory&) = delete;
  const std::string& Path() const { return m_path; }

 private:
  std::string m_path;
};

}  // namespace desk
