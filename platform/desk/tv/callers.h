// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "desk/tv/router.h"

namespace desk::tv {

/// What the process table says about a running process.
struct ProcessParents {
  pid_t parent = 0;
  pid_t session = 0;
};

/// Reads /proc. Nothing when there is no such process.
std::optional<ProcessParents> ReadProcessParents(pid_t pid);

/// Finds out what a calling process is: the daemon or the app that desk-tv started as this process,
/// as one of its ancestors, or as the leader of its session. Any other process is an operator's.
/// Main loop's thread only.
class CallerTable {
 public:
  using Reader = std::function<std::optional<ProcessParents>(pid_t)>;

  explicit CallerTable(Reader reader = ReadProcessParents) : m_reader(std::move(reader)) {}

  /// Call these right after the start of a process, before the main loop runs again. For the daemon
  /// pass the pid of its sandbox.
  void AddDaemon(pid_t pid);
  void AddApp(pid_t pid, const std::string& appId);
  /// Call it when the process was waited for: its pid may be reused from then on.
  void Remove(pid_t pid);

  /// Sets kind, pid and appId, but not busName.
  Caller Identify(pid_t pid) const;

 private:
  const Caller* Find(pid_t pid) const;

  const Reader m_reader;
  std::map<pid_t, Caller> m_started;
};

}  // namespace desk::tv
