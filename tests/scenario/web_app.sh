#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A UI application as the desk runs it: a process of its own that walks the words of its status, enters
# the states that it is told to, and dies as the low-memory killer would have it.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/custom_ui.sh"

tv up
for package in webappone1 webapptwo1; do
  make_wgt "$work/$package.wgt" "$package" 1.0.0 ''; tv pkg install "$work/$package.wgt"
done
app=webappone1.App
word=rtc/memory/WebApp/$app
tv key watch --json "$word" >"$work/seen" & watch=$!
walked() { # WHAT WORDS: since the last look
  deadline=$(($(date +%s) + 30 * slow))
  until jq -rs '.[].value' "$work/seen" | tail -n +$((seen + 1)) | paste -s -d' ' >"$work/words" && [ "$(cat "$work/words")" = "$2" ]; do
    [ "$(date +%s)" -lt "$deadline" ] || die "$1: $(cat "$work/words")"
    pause
  done
  seen=$(jq -rs length "$work/seen"); passed "$1"
}
seen=0
pid_of() { tv app list --json | jq --arg app "$1" '.[] | select(.id == $app).pid'; }
runs() { [ -d "/proc/$1" ] && ! grep -q '^State:.*Z' "/proc/$1/status"; }
# The watch must be there before the first word: the key is set until it is seen.
watched() { tv key set -t string "$word" ""; [ -s "$work/seen" ]; }
comes_true "the watch sees a set of the key" watched
seen=$(jq -rs length "$work/seen")

tv app launch $app
walked "launched, it comes to the front" "init load resume"
holds "the dump knows" "$(app_is $app '.running and .status == "resume"')"
first=$(pid_of $app)
tv app launch webapptwo1.App
reached "another one comes to the front" "$(app_is webapptwo1.App '.status == "resume"')"
second=$(pid_of webapptwo1.App)
[ "$first" != "$second" ] && runs "$first" && runs "$second" || die "one process for each app"
passed "each has a process of its own"

for state in pause resume preload destroy init load pause; do tv app status $app $state; done
walked "told to, it enters each state in turn" "pause resume preload destroy init load pause"
tv app launch $app
walked "launched again, it comes to the front" resume
equal "in the same process" "$first" "$(pid_of $app)"
tv app launch $app $LAUNCH_MODE=backgroundAtStartup
equal "a launch in the background leaves it where it is" resume "$(tv key get -r "$word")"
tv app status $app quit
walked "it quits" quit
reached "and is gone" "$(app_is $app '(.running | not) and .status == ""')"

tv app launch $app $LAUNCH_MODE=backgroundAtStartup
walked "launched in the background, it stays there" "init load preload"
tv app launch $app
walked "until it is launched to be seen" resume
tv app kill $app
walked "killed, it has gone without quitting" destroy
reached "and is gone" "$(app_is $app '.running | not')"

tv app launch $app; tv app status $app pause
walked "told to while it loads, it loads first" "init load resume pause"
tv app status $app quit; tv app launch $app
walked "launched as it quits, it starts anew" "quit init load resume"
tv app kill $app; tv app launch $app
walked "and so as it is killed" "destroy init load resume"
old=$(pid_of $app)
tv app kill $app; walked "killed" destroy
tv app launch $app >/dev/null; (tv app status $app pause >"$work/out" 2>"$work/err" && echo done >"$work/told" || echo "failed" >"$work/told") & telling=$!
tv app kill $app; wait $telling
case "$(cat "$work/told")$(cat "$work/err")" in
  *"ended before it entered the state"* | *"is not running"*) passed "who waits for a state is told of the end" ;;
  *) die "who waits for a state: $(cat "$work/told" "$work/err")" ;;
esac
seen=$(jq -rs length "$work/seen")
runs "$old" && die "process $old is still there"

exits "an unknown word" 2 tv app status $app dancing
exits "an unknown app" 4 tv app status nobody.App resume
exits "an app that does not run" 1 tv app status webappone1.App resume
exits "nothing to kill" 1 tv app kill $app
exits "an unknown app to kill" 4 tv app kill nobody.App
tv pkg install "$ORV_SAMPLES/service-stubborn.wgt"
service=$(tv app list --json | jq -r '.[] | select(.component == "service").id')
exits "a service has no such states" 1 tv app status "$service" resume

kill $watch; wait $watch 2>/dev/null || true
tv pkg uninstall webapptwo1
runs "$second" && die "process $second is still there"
passed "the process goes with the package"
tv app launch $app; last=$(pid_of $app)
tv down
runs "$last" && die "process $last is still there"
passed "and with the TV"
the_end
