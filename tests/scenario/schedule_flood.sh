#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A hundred thousand messages from eight service apps at once: each is handled once, in the order of
# its sender, while the main loop keeps serving its timers.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/schedule_lib.sh"

SENDERS="1 2 3 4 5 6 7 8"
EACH=12500
EVERY=250 # every EVERY-th message sets a due time, which writes to the store

# At this speed the watchdog's timer of ten seconds fires every tenth of a second.
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
  equal "sender $i: every message is accepted, every due time answered" \
    "taken $EACH answers $((EACH / EVERY))" "$(cat "$TV_ROOT/log/flood000$i.Feed.log")"
done

# The last message of each sender was answered, so all messages before it have been handled.
sed -n 's/.*\[Debug\] key : number, value : //p' "$TV_ROOT/log/daemon.log" >"$work/numbers"
equal "no message is lost" "$((8 * EACH))" "$(sort -u "$work/numbers" | wc -l)"
equal "no message is handled twice" "$((8 * EACH))" "$(wc -l <"$work/numbers")"
for i in $SENDERS; do
  equal "sender $i: the messages are handled in order" "" \
    "$(sed -n "s/^flood000$i\.Feed-//p" "$work/numbers" | sort -nc 2>&1)"
done
equal "each due time is stored" "$((8 * EACH / EVERY))" "$(count_log ' UpdateRecord(')"

# From the journal, in milliseconds of the machine's clock: the longest time for handling one message,
# and the longest delay of the watchdog's timer.
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
echo "  handled within $without ms, with a write to the store within $with ms; timers at most $late ms late"
[ "$signs" -ge 10 ] || die "the watchdog's timer fired $signs times, not 10"
passed "the watchdog's timer kept firing"
[ "$late" -lt 1000 ] || die "the main loop was blocked for $late ms"
passed "the main loop was never blocked"
holds "the daemon did not restart" '.daemon.restarts == 0'
the_end
