// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace desk {

/// What the process was given at its start: see docs/desk-protocol.md. Constant.
struct Environment {
  enum class Role { None, Daemon, App };

  Role role = Role::None;
  std::string busAddress;  ///< empty: no desk
  std::string prefix;      ///< stands in front of /opt/usr/apps
  std::string package;     ///< the process's own; empty when it is no application
  std::string faults;      ///< path of the fault table, or empty
  std::string log;         ///< path, or empty: standard error
  std::string journal;     ///< path, or empty: none is kept

  /// Read on the first use and kept, so that no later setenv() of the process is raced. Callable
  /// from static initialisers and from any thread.
  static const Environment& Get();
};

}  // namespace desk
