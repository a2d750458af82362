// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// A daemon for the contract tests. It reports that its main loop runs, and makes the calls that
// only a daemon may make when a settings key is set.
#include <glib.h>
#include <smart_deadlock.h>
#include <vconf.h>

#include <string>

namespace {

void OnWatchdog(keynode_t* node, void* loop) {
  const int registered = smart_deadlock_register_watchdog_service(vconf_keynode_get_int(node));
  const int notified = smart_deadlock_watchdog_notify(loop);
  const std::string results = std::to_string(registered) + " " + std::to_string(notified);
  vconf_set_str("memory/contract/watchdog_results", results.c_str());
}

}  // namespace

int main() {
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  if (vconf_notify_key_changed("memory/contract/watchdog", OnWatchdog, loop) != 0) {
    return 1;
  }
  g_main_loop_run(loop);
  g_main_loop_unref(loop);
  return 0;
}
