#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The TV dies without warning. What ends with the power has ended at the next start, what is kept is
# kept.
. "$(dirname "$0")/lib.sh"

READY=$TV_ROOT/tmp/hbb_ready
tv up --offline
tv key set -t int memory/hbbtv_status 6
reached "the flag file is there" '.files | has("/tmp/hbb_ready")'
web_feeder "$work/a.wgt" powerapp01
tv pkg install "$work/a.wgt"
reached "an app is stored" "$(stored powerapp01)"
tv daemon restart
there "a restart of the daemon leaves the flag file" "$READY"
old=$(tv status --json | jq .daemon.pid)
tv daemon kill
reached "a daemon that was killed is back" ".daemon.state == \"ready\" and .daemon.pid != $old"
there "that leaves it as well" "$READY"
equal "status tells how the last one ended" yes "$(tv status | grep -q '^daemon .*; last end: signal 9 (Killed)$' && echo yes)"
equal "and so does the dump" "signal 9 (Killed)" "$(tv dump | jq -r .daemon.reason)"

desk=$(tv status --json | jq .pid)
kill -KILL "$desk"
gone() { [ ! -d "/proc/$desk" ] || grep -q '^State:.*Z' "/proc/$desk/status"; }
comes_true "the end of desk-tv" gone
there "the dead TV has left it" "$READY"
tv up --offline
absent "at the next start it is gone" "$READY"
holds "the dump has it no more" '.files | has("/tmp/hbb_ready") | not'
holds "the app is still stored" "$(stored powerapp01)"
the_end
