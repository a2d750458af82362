// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "call/call.h"

namespace desk::client {

/// The journal and the fault table of this process. The first use starts the wait for the main
/// loop's first run, and gives the task framework this backend if the process has a journal or a
/// fault table. Callable from any thread and from static initialisers. Exceptions are logged.
platform::Backend& GetBackend();

/// A call of a platform interface.
class Call : public platform::Call {
 public:
  template <typename... Args>
  explicit Call(const char* name, const Args&... args)
      : platform::Call(&GetBackend(), name, args...) {}
};

}  // namespace desk::client
