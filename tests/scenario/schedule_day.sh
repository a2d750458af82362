#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A day of television with five service apps on the schedule, 600 times faster, with a crash of the
# daemon and a power cut; less of a day, and slower, with slow programs. The schedule is compared with a model.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/schedule_lib.sh"

HOURS=${HOURS:-$((24 / slow))}
PACKAGES="servendles servfeeder servfifth1 servnonsen servstubbo"
LOG=$TV_ROOT/log/daemon.log

# now: the daemon's time in seconds since 1970, from its last platform call.
now() { date -u -d "$(tail -n 1 "$TV_ROOT/log/journal.jsonl" | jq -r .time)" +%s; }
clock() { date -u -d "@$1" +%H:%M; }
# until_hour N: waits until N hours after the beginning.
until_hour() {
  deadline=$(($(date +%s) + 120 * slow))
  until [ "$(now)" -ge "$((began + $1 * 3600))" ]; do
    [ "$(date +%s)" -lt "$deadline" ] || die "hour $1 was not reached in time"
    sleep 0.5 # the condition is the passing of time itself
  done
}
# The schedule from the journal: ticks, launches, ends.
print_schedule() {
  tv journal --json | jq -r '
    (.time[11:19]) as $t |
    if .call == "FCTask::Send" and .args[0] == "ORVScheduler" then
      {"1002": "start", "1004": "tick", "1005": "next", "1006": "completed"}[.args[1] | tostring] as $e |
      if $e then "\($t) \($e)" else empty end
    elif .call == "app_control_set_app_id" and (.args[1] | endswith(".Feed")) then "\($t)   launch \(.args[1])"
    elif .call == "app_manager_is_running" then "\($t)   end \(.args[0])\(if .args[1] then "" else " (already gone)" end)"
    elif .call == "app_context_get_pid" then "\($t)   kill \(.args[1])"
    else empty end'
}
model() { awk -f "$(dirname "$0")/schedule_model.awk" "$LOG"; }

tv up --speed $((600 / slow))
began=$(now)
echo "the day begins at $(clock "$began")"
service_wgt "$work/fifth.wgt" servfifth1 "tv port send $PORT $SET_TIME expiration_time=7200"
# One after the other: each install waits until the daemon has launched the previous app.
for sample in endless feeder stubborn nonsense; do
  tv pkg install "$ORV_SAMPLES/service-$sample.wgt"
  package=$(unzip -p "$ORV_SAMPLES/service-$sample.wgt" config.xml | sed -n 's/.*package="\([a-z0-9]*\)".*/\1/p')
  logged "$package is launched at once" "[Info] rAppID : $package.Feed"
done
tv pkg install "$work/fifth.wgt"
logged "servfifth1 is launched at once" "[Info] rAppID : servfifth1.Feed"
logged "servfifth1 sets its due time" "[Debug] sTargetPackageID : servfifth1"
reached "each addition ended the running app, even the endless one" "$(is_running servendles) | not"

until_hour $((HOURS / 3))
holds "the daemon has not restarted so far" '.daemon.restarts == 0'
feeder=$(due servfeeder); fifth=$(due servfifth1)
old=$(tv status --json | jq .daemon.pid)
tv daemon kill
reached "after a crash the daemon is ready again" ".daemon.state == \"ready\" and .daemon.pid != $old"
# later WHAT PACKAGE DUE: the due time is DUE, or a later one that the app has set since.
later() {
  stored_due=$(due "$2")
  [ "$stored_due" = "$3" ] || [ "$(printf '%s\n' "$3" "$stored_due" | sort | tail -n 1)" = "$stored_due" ] ||
    die "$1: $2 is due at $stored_due, before $3"
  passed "$1: the due time of $2 is kept"
}
later "crash" servfeeder "$feeder"
later "crash" servfifth1 "$fifth"

until_hour $((HOURS * 2 / 3))
feeder=$(due servfeeder); fifth=$(due servfifth1)
tv power-cycle
later "power cut" servfeeder "$feeder"
later "power cut" servfifth1 "$fifth"

until_hour "$HOURS"
tv daemon stop
print_schedule >"$work/schedule"
model >"$work/model"
echo "--- the schedule as it ran"
cat "$work/schedule"
echo "---"
cat "$work/model"
equal "every step matches the model" "" "$(grep WRONG "$work/model" || true)"
# figure NAME: that number from the model's last line.
figure() { tail -n 1 "$work/model" | grep -o "[0-9]* $1" | cut -d ' ' -f 1; }
launched() { sed -n "s/^launched $1 //p" "$work/model"; }
equal "log and journal agree on the launches" "$(figure launches)" "$(grep -c ' launch ' "$work/schedule")"
equal "log and journal agree on the kills" "$(figure kills)" "$(grep -c ' kill ' "$work/schedule")"
# within WHAT LEAST ACTUAL MOST
within() {
  [ "$2" -le "$3" ] && [ "$3" -le "$4" ] || die "$1: $3 is not between $2 and $4"
  passed "$1: $3"
}
# A start after a restart can add a second timer, but never a third.
within "ticks of 720 seconds" $((HOURS * 4 - 2)) "$(figure ticks)" $((HOURS * 15))
within "seconds between ticks" 700 "$(figure seconds)" 800
within "launches of an app that asks for an hour" $((HOURS / 3)) "$(launched servfeeder)" $((HOURS + 3))
within "launches of an app that asks for two hours" $((HOURS / 6)) "$(launched servfifth1)" $((HOURS / 2 + 3))
for package in servendles servnonsen servstubbo; do
  within "launches of $package, which is always due" $((HOURS / 4)) "$(launched $package)" $((HOURS * 5))
done
[ "$(figure refills)" -ge $((HOURS / 4)) ] || die "the list was refilled $(figure refills) times"
passed "the list was refilled $(figure refills) times"
[ "$(figure 'not due')" -ge 1 ] || die "no app was ever picked before it was due"
passed "apps were picked before they were due $(figure 'not due') times"
the_end
