#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A UI application as the desk runs it: a process of its own that writes its statuses, enters a state on
# request, and can be killed as by the low-memory killer.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/custom_ui.sh"

tv up
for package in webappone1 webapptwo1; do
  make_wgt "$work/$package.wgt" "$package" 1.0.0 ''; tv pkg install "$work/$package.wgt"
done
app=webappone1.App
status_key=rtc/memory/WebApp/$app
tv key watch --json "$status_key" >"$work/seen" & watch=$!
walked() { # WHAT STATUSES: waits until the statuses since the last call are these
  deadline=$(($(date +%s) + 30 * slow))
  until jq -rs '.[].value' "$work/seen" | tail -n +$((seen + 1)) | paste -s -d' ' >"$work/statuses" && [ "$(cat "$work/statuses")" = "$2" ]; do
    [ "$(date +%s)" -lt "$deadline" ] || die "$1: $(cat "$work/statuses")"
    pause
  done
  seen=$(jq -rs length "$work/seen"); passed "$1"
}
seen=0
pid_of() { tv app list --json | jq --arg app "$1" '.[] | select(.id == $app).pid'; }
runs() { [ -d "/proc/$1" ] && ! grep -q '^State:.*Z' "/proc/$1/status"; }
# The watch must be active before the first status: set the key until the watch prints a line.
watched() { tv key set -t string "$status_key" ""; [ -s "$work/seen" ]; }
comes_true "the watch sees a set of the key" watched
seen=$(jq -rs length "$work/seen")

tv app launch $app
walked "launched, it comes to the front" "init load resume"
holds "the dump shows the status" "$(app_is $app '.running and .status == "resume"')"
first=$(pid_of $app)
tv app launch webapptwo1.App
reached "another app comes to the front" "$(app_is webapptwo1.App '.status == "resume"')"
second=$(pid_of webapptwo1.App)
[ "$first" != "$second" ] && runs "$first" && runs "$second" || die "the apps do not have a process each"
passed "each has a process of its own"

for state in pause resume preload destroy init load pause; do tv app status $app $state; done
walked "on request it enters each state in turn" "pause resume preload destroy init load pause"
tv app launch $app
walked "launched again, it comes to the front" resume
equal "the process is still the same" "$first" "$(pid_of $app)"
tv app launch $app $LAUNCH_MODE=backgroundAtStartup
equal "a launch in the background does not change its state" resume "$(tv key get -r "$status_key")"
tv app status $app quit
walked "the app quits" quit
reached "the app is not running" "$(app_is $app '(.running | not) and .status == ""')"

tv app launch $app $LAUNCH_MODE=backgroundAtStartup
walked "launched in the background, it stays there" "init load preload"
tv app launch $app
walked "a launch in the foreground brings it to the front" resume
tv app kill $app
walked "killed, it is destroyed without quitting" destroy
reached "the app is not running" "$(app_is $app '.running | not')"

tv app launch $app; tv app status $app pause
walked "on a request while it loads, it loads first" "init load resume pause"
tv app status $app quit; tv app launch $app
walked "launched while it quits, it starts again" "quit init load resume"
tv app kill $app; tv app launch $app
walked "launched while it is killed, it starts again" "destroy init load resume"
old=$(pid_of $app)
tv app kill $app; walked "killed" destroy
tv app launch $app >/dev/null; (tv app status $app pause >"$work/out" 2>"$work/err" && echo done >"$work/result" || echo "failed" >"$work/result") & requesting=$!
tv app kill $app; wait $requesting
case "$(cat "$work/result")$(cat "$work/err")" in
  *"ended before it entered the state"* | *"is not running"*) passed "a request in progress fails when the app ends" ;;
  *) die "a request in progress: $(cat "$work/result" "$work/err")" ;;
esac
seen=$(jq -rs length "$work/seen")
runs "$old" && die "process $old is still there"

exits "an unknown state" 2 tv app status $app dancing
exits "an unknown app" 4 tv app status nobody.App resume
exits "an app that is not running" 1 tv app status webappone1.App resume
exits "a kill of an app that is not running" 1 tv app kill $app
exits "a kill of an unknown app" 4 tv app kill nobody.App
tv pkg install "$ORV_SAMPLES/service-stubborn.wgt"
service=$(tv app list --json | jq -r '.[] | select(.component == "service").id')
exits "a service has no such states" 1 tv app status "$service" resume

kill $watch; wait $watch 2>/dev/null || true
tv pkg uninstall webapptwo1
runs "$second" && die "process $second is still there"
passed "an uninstall ends the process"
tv app launch $app; last=$(pid_of $app)
tv down
runs "$last" && die "process $last is still there"
passed "tv down ends the process"
the_end
