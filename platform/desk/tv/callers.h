// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "tv/router.h"

namespace desk::tv {

/// What the process table tells about a process that lives.
struct ProcessParents {
  pid_t parent = 0;
  pid_t session = 0;
};

/// Of a process of this machine; nothing when there is none. Reads /proc.
std::optional<ProcessParents> ReadProcessParents(pid_t pid);

/// Who a process belongs to: the one that desk-tv started it as, or started one of its ancestors
/// or the leader of its session as. Everybody else is an operator. Main loop's thread only.
class CallerTable {
 public:
  using Reader = std::function<std::optional<ProcessParents>(pid_t)>;

  explicit CallerTable(Reader reader = ReadProcessParents) : m_reader(std::move(reader)) {}

  /// To be called right after the start of a process, before the main loop runs again. For the
  /// daemon the pid is that of the sandbox around it.
  void AddDaemon(pid_t pid);
  void AddApp(pid_t pid, const std::string& appId);
  /// To be called when the process was waited for: from then on its pid may be anybody's.
  void Remove(pid_t pid);

  /// kind, pid and appId are set; busName is not.
  Caller Identify(pid_t pid) const;

 private:
  const Caller* Find(pid_t pid) const;

  const Reader m_reader;
  std::map<pid_t, Caller> m_started;
};

}  // namespace desk::tv
