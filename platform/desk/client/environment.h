// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace desk::client {

/// The environment variables of the process: see docs/desk-protocol.md. Constant.
struct Environment {
  enum class Role { None, Daemon, App };

  Role role = Role::None;
  std::string busAddress;  ///< empty without a desk
  std::string prefix;      ///< precedes /opt/usr/apps
  std::string package;     ///< of the process; empty when it is not an application
  std::string faults;      ///< path of the fault table, or empty
  std::string log;         ///< path, or empty: standard error
  std::string journal;     ///< path, or empty: no journal

  /// Read at the first use only, so that it cannot race with a later setenv(). Callable from static
  /// initialisers and from any thread.
  static const Environment& Get();
};

}  // namespace desk::client
