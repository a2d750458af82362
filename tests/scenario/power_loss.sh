#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The TV is killed without warning. At the next start, volatile state is gone and stored state is
# kept.
. "$(dirname "$0")/lib.sh"

READY=$TV_ROOT/tmp/hbb_ready
tv up --offline
tv key set -t int memory/hbbtv_status 6
reached "the flag file is created" '.files | has("/tmp/hbb_ready")'
web_feeder "$work/a.wgt" powerapp01
tv pkg install "$work/a.wgt"
reached "an app is stored" "$(stored powerapp01)"
tv daemon restart
there "a restart of the daemon keeps the flag file" "$READY"
old=$(tv status --json | jq .daemon.pid)
tv daemon kill
reached "a killed daemon is restarted" ".daemon.state == \"ready\" and .daemon.pid != $old"
there "the kill keeps the flag file as well" "$READY"
equal "tv status shows how the previous daemon ended" yes "$(tv status | grep -q '^daemon .*; last end: signal 9 (Killed)$' && echo yes)"
equal "the dump shows it as well" "signal 9 (Killed)" "$(tv dump | jq -r .daemon.reason)"

desk=$(tv status --json | jq .pid)
kill -KILL "$desk"
gone() { [ ! -d "/proc/$desk" ] || grep -q '^State:.*Z' "/proc/$desk/status"; }
comes_true "the end of desk-tv" gone
there "the flag file remains after the kill of desk-tv" "$READY"
tv up --offline
absent "the next start deletes the flag file" "$READY"
holds "the flag file is no longer in the dump" '.files | has("/tmp/hbb_ready") | not'
holds "the app is still stored" "$(stored powerapp01)"
the_end
