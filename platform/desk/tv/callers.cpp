// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/callers.h"

#include <fstream>
#include <sstream>

#include "desk/common/paths.h"

namespace desk::tv {

std::optional<ProcessParents> ReadProcessParents(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string line;
  if (!std::getline(file, line)) {
    return std::nullopt;
  }
  // The name in parentheses may contain any character, also parentheses and blanks.
  const std::size_t nameEnd = line.rfind(')');
  if (nameEnd == std::string::npos) {
    return std::nullopt;
  }
  std::istringstream rest(line.substr(nameEnd + 1));
  char state = 0;
  pid_t group = 0;
  ProcessParents parents;
  if (!(rest >> state >> parents.parent >> group >> parents.session)) {
    return std::nullopt;
  }
  return parents;
}

void CallerTable::AddDaemon(pid_t pid) {
  Caller caller;
  caller.kind = Caller::Kind::Daemon;
  caller.appId = DeskPaths::DAEMON_ID;
  m_started[pid] = caller;
}

void CallerTable::AddApp(pid_t pid, const std::string& appId) {
  Caller caller;
  caller.kind = Caller::Kind::App;
  caller.appId = appId;
  m_started[pid] = caller;
}

void CallerTable::Remove(pid_t pid) {
  m_started.erase(pid);
}

const Caller* CallerTable::Find(pid_t pid) const {
  const auto found = m_started.find(pid);
  return found == m_started.end() ? nullptr : &found->second;
}

Caller CallerTable::Identify(pid_t pid) const {
  // The process table may change during the walk, so its depth is limited.
  constexpr int MAX_DEPTH = 64;
  const Caller* owner = nullptr;
  pid_t at = pid;
  for (int depth = 0; owner == nullptr && at > 1 && depth < MAX_DEPTH; ++depth) {
    owner = Find(at);
    const std::optional<ProcessParents> parents = m_reader(at);
    if (!parents) {
      break;
    }
    if (owner == nullptr) {
      owner = Find(parents->session);
    }
    at = parents->parent;
  }
  Caller caller = owner == nullptr ? Caller() : *owner;
  caller.pid = pid;
  return caller;
}

}  // namespace desk::tv
