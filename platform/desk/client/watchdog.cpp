// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <smart_deadlock.h>

#include "desk/client/call.h"
#include "desk/client/connection.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;

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
    // A reply would wake the main loop a second time for each notification.
    Connection::Get().Tell("watchdog.notify", Request({}));
    return 0;
  });
}
