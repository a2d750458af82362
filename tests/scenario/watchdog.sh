#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A daemon that does not notify the watchdog in the time it registered is replaced; so is one that dies.
. "$(dirname "$0")/lib.sh"

tv up --speed 40
old=$(tv status --json | jq .daemon.pid)
equal "the daemon registers once, with 120 seconds" "smart_deadlock_register_watchdog_service(120) = 0" "$(calls register_watchdog)"
reached "the daemon is running" '.daemon.running'
deadline=$(($(date +%s) + 20 * slow))
until calls watchdog_notify | grep -q 'smart_deadlock_watchdog_notify'; do
  [ "$(date +%s)" -lt "$deadline" ] || die "the journal has no notification"
  pause
done
passed "the daemon notifies the watchdog"
kill -STOP "$old"
reached "a silent daemon is replaced" ".daemon.running and .daemon.pid != $old and .daemon.state == \"ready\"" 60
holds "the restart is counted" '.daemon.restarts == 1'
old=$(tv status --json | jq .daemon.pid)
kill -SEGV "$old"
reached "a crashed daemon is replaced" ".daemon.running and .daemon.pid != $old and .daemon.state == \"ready\""
holds "the second restart is counted as well" '.daemon.restarts == 2'
the_end
