// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <string>

#include "desk/common/paths.h"
#include "support/files.h"

namespace contract {

/// A television for one test, in its own directory, with a daemon that does nothing. The destructor
/// switches it off. The constructor throws std::runtime_error when it does not start.
class DeskProcess {
 public:
  DeskProcess();
  ~DeskProcess();
  DeskProcess(const DeskProcess&) = delete;
  DeskProcess& operator=(const DeskProcess&) = delete;

  const desk::DeskPaths& Paths() const { return m_paths; }
  /// For other files of the test.
  std::string ScratchFile(const std::string& name) const { return m_directory / name; }

 private:
  void Start();

  support::TempDir m_directory;
  const desk::DeskPaths m_paths;
  pid_t m_pid = -1;
};

}  // namespace contract
