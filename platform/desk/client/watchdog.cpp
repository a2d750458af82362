// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <smart_deadlock.h>

#include "client/call.h"
#include "client/connection.h"

using desk::Call;
using desk::Connection;
using desk::Request;

int smart_deadlock_register_watchdog_service(int timeout_seconds) {
  Call call("smart_deadlock_register_watchdog_service", timeout_seconds);
  return call.Run(-1, [&] {
    Connection::Get().Call("watchdog.register", Request({{"seconds", timeout_seconds}}));
    return 0;
  });
}

int smart_deadlock_watchdog_notify(void* context) {
  Call call("smart_deadlock_watchdog_notify", context);
  return call.Run(-1, [] {
    // An answer would wake the main loop a second time for each sign of life.
    Connection::Get().Tell("watchdog.notify", Request({}));
    return 0;
  });
}
