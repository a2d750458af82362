#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A hundred thousand messages from eight service apps at once: each is handled once, in its sender's
# order, and the main loop goes on serving its timers meanwhile.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/schedule_lib.sh"

SENDERS="1 2 3 4 5 6 7 8"
EACH=12500
EVERY=250 # one of so many asks for a due time: a write of the store

# The watchdog's timer of ten seconds comes every tenth of a second then.
tv up --offline --speed 100
for i in $SENDERS; do
  service_wgt "$work/$i.wgt" "flood000$i" "exec port_flood $EACH $EVERY"
  tv pkg install "$work/$i.wgt"
done
reached "all eight are stored" '.store | length == 8'
forget_log
from=$(wc -l <"$TV_ROOT/log/journal.jsonl")
for i in $SENDERS; do tv app launch "flood000$i.Feed"; done
reached "the senders have ended" '[.apps[] | select(.id | test("Feed")) | .running] | any | not' 60
for i in $SENDERS; do
  equal "sender $i: every message was taken, every due time answered" \
    "taken $EACH answers $((EACH / EVERY))" "$(cat "$TV_ROOT/log/flood000$i.Feed.log")"
done

# The last message of each sender has an answer, so the others before it are handled.
sed -n 's/.*\[Debug\] key : number, value : //p' "$TV_ROOT/log/daemon.log" >"$work/numbers"
equal "none is lost, none came twice" "$((8 * EACH))" "$(sort -u "$work/numbers" | wc -l)"
equal "and no other came" "$((8 * EACH))" "$(wc -l <"$work/numbers")"
for i in $SENDERS; do
  equal "sender $i: in the order of sending" "" \
    "$(sed -n "s/^flood000$i\.Feed-//p" "$work/numbers" | sort -nc 2>&1)"
done
equal "each due time was stored" "$((8 * EACH / EVERY))" "$(count_log ' UpdateRecord(')"

# From the journal, in milliseconds of the machine's clock: how long the handling of one message took
# at most, and how late the watchdog's timer came.
tail -n "+$((from + 1))" "$TV_ROOT/log/journal.jsonl" | awk -F'"' '
  { split(substr($6, 12), t, ":"); now = (t[1] * 3600 + t[2] * 60 + t[3]) * 10 }
  $14 == "bundle_foreach" { began = now; stored = 0 }
  $14 == "bundle_add_str" && /result_success/ { stored = 1 }
  $14 == "bundle_free" && now >= began && now - began > longest[stored] { longest[stored] = now - began }
  $14 == "smart_deadlock_watchdog_notify" {
    if (before && now - before - 100 > late) late = now - before - 100
    before = now; ++signs
  }
  END { printf "%d %d %d %d\n", longest[0], longest[1], late, signs }' >"$work/figures"
read -r without with late signs <"$work/figures"
echo "  handled within $without ms, with a write of the store within $with ms; timers at most $late ms late"
[ "$signs" -ge 10 ] || die "the watchdog's timer came $signs times"
passed "the timer came all the while"
[ "$late" -lt 1000 ] || die "the main loop was blocked for $late ms"
passed "the main loop was never blocked"
holds "the daemon lived through it" '.daemon.restarts == 0'
the_end
