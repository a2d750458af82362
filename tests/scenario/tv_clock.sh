#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The TV's clock after a fast run: it continues after power-off and a kill, until it is reset.
. "$(dirname "$0")/lib.sh"

clock() { tv status --json | jq .clock; }
# The time of the daemon's last platform call, by the daemon's own clock.
daemon_time() { date -u -d "$(tail -n 1 "$TV_ROOT/log/journal.jsonl" | jq -r .time)" +%s; }
ahead() { [ "$(($(clock) - $(date +%s)))" -ge "$1" ]; }
# not_before WHAT EARLIER LATER
not_before() { [ "$3" -ge "$2" ] || die "$1: $3 is before $2"; passed "$1"; }

tv up
ahead 5 && die "a new TV does not have the machine's time"
passed "a new TV has the machine's time"
tv down
tv up --speed 3600
comes_true "an hour has passed" ahead 3600
fast=$(daemon_time) before=$(clock)
tv down

tv up
not_before "the next TV continues from there" "$before" "$(clock)"
not_before "and so does its daemon" "$fast" "$(daemon_time)"
tv status | grep -q '^clock .* ahead of this machine$' || die "tv status does not show the clock"
passed "tv status shows how far ahead the clock is"
tv down

tv up --speed 3600
before=$(clock)
kill -9 "$(tv status --json | jq .pid)"
comes_true "the TV is gone" sh -c '! tv status >/dev/null 2>&1'
tv up
not_before "the clock does not go back after a kill either" "$before" "$(clock)"
tv down

tv up --reset-clock
ahead 5 && die "the clock was not reset"
passed "--reset-clock returns to the machine's time"
tv down
tv up
ahead 5 && die "the old time came back"
passed "the clock stays reset"
the_end
