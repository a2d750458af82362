#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A daemon that is silent for longer than it registered is replaced; so is one that dies.
. "$(dirname "$0")/lib.sh"

tv up --speed 40
old=$(tv status --json | jq .daemon.pid)
equal "registered once, with 120 seconds" "smart_deadlock_register_watchdog_service(120) = 0" "$(calls register_watchdog)"
reached "notified with the loop" '.daemon.running'
deadline=$(($(date +%s) + 20 * slow))
until calls watchdog_notify | grep -q 'smart_deadlock_watchdog_notify'; do
  [ "$(date +%s)" -lt "$deadline" ] || die "no sign of life in the journal"
  pause
done
passed "it gives signs of life"
kill -STOP "$old"
reached "a silent daemon is replaced" ".daemon.running and .daemon.pid != $old and .daemon.state == \"ready\"" 60
holds "and that is counted" '.daemon.restarts == 1'
old=$(tv status --json | jq .daemon.pid)
kill -SEGV "$old"
reached "a crashed one is replaced" ".daemon.running and .daemon.pid != $old and .daemon.state == \"ready\""
holds "counted as well" '.daemon.restarts == 2'
the_end
