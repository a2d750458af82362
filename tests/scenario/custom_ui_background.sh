#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The cold-boot option "background_img": a replacement UI answers until the app is up, for 20 seconds
# at most, and again after the app has quit.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/custom_ui.sh"

app=guidebackg.Guide
layout=replaceui1.Layout
bridged='(.operations | length == 2) and (.operations | all(.app == "'$layout'"))'
served='(.operations | length == 2) and (.operations | all(.app == "'$app'"))'
road="channel-list=$layout epg=$layout channel-list=$app epg=$app"
# waited: seconds by the daemon's own clock from the replacement UI's turn to the app's, for each pair.
waited() {
  tv log --json | jq -rs --arg layout "$layout" --arg app "$app" '
    def seconds: .time[6:] | split(":") | (.[0] | tonumber) * 3600 + (.[1] | tonumber) * 60 + (.[2] | tonumber);
    [.[] | select(.text | test("rOperation : .*/epg, .*bEnable : 1"))] as $turns
    | [range(0; $turns | length) as $i
       | select(($turns[$i].text | contains("rAppID : " + $layout + ",")) and ($turns[$i + 1].text // "" | contains("rAppID : " + $app + ",")))
       | ($turns[$i + 1] | seconds) - ($turns[$i] | seconds) | if . < 0 then . + 86400 else . end]
    | .[]'
}
# in_order WHAT FIRST SECOND: the first text stands in the log before the second.
in_order() {
  first=$(grep -nF -- "$2" "$TV_ROOT/log/daemon.log" | head -n 1 | cut -d: -f1)
  second=$(grep -nF -- "$3" "$TV_ROOT/log/daemon.log" | head -n 1 | cut -d: -f1)
  [ -n "$first" ] && [ -n "$second" ] && [ "$first" -lt "$second" ] || die "$1: \"$2\" at line ${first:-none}, \"$3\" at line ${second:-none}"
  passed "$1"
}
refresh() { tv app launch "$app" >/dev/null; reached "the app is in front" "$(app_is "$app" '.status == "resume"')"; main_loop_done; }

echo "the app is up in time"
tv up
tv pkg install "$ORV_SAMPLES/replacement-ui.wgt"
mkdir -p "$TV_ROOT/opt/share/orv_ch"
cp "$APPS/replaceui1/res/wgt/replacement_ui_info.json" "$REPLACEMENT"
forget_log; tv pkg install "$ORV_SAMPLES/guide-background.wgt"
reached "the replacement UI answers first" "$bridged"
key_is "the app is announced" "$(screens guidebackg "$app" background_img)"
reached "the app is loaded" "$(app_is "$app" '.status == "preload"')"
tv app status "$app" resume
reached "it comes to the front, and takes over at once" "$served"
installer_done
silent "before the check for a low-memory kill" "[Info] m_iCurrentWebAppStatus"
equal "the whole road" "$road" "$(op_changes)"
equal "launched once, in the background" "$(background "$app")" "$(launches)"
logged "the replacement UI was read" "[Debug] sLayoutAppID : $layout"
[ "$(waited | cut -d. -f1)" -lt 19 ] || die "it waited $(waited) s"; passed "long before the 20 seconds were over"
threads() { tv log --json | jq -r --arg text "$1" 'select(.text | contains($text)).tid' | sort -u | paste -s -d' '; }
worker=$(threads "bEnable : 1")
case "$worker" in *" "*) die "the operations were set by several threads: $worker" ;; esac
[ "$worker" != "$(threads "pEvent : 1000" | cut -d' ' -f1)" ] && [ "$worker" != "$(tv status --json | jq .daemon.pid)" ] ||
  die "the operations were set by thread $worker, which is no worker"
passed "on a thread of its own"
tv down

echo "the TV is switched on"
forget_log; tv up --speed 5
reached "a start runs it in two passes, before the main loop" '.daemon.state == "ready"'
equal "each of which waits the 20 seconds out: no word can be told yet" "20 20" "$(waited | cut -d. -f1 | paste -s -d' ')"
equal "the road of each pass" "$road $road" "$(op_changes)"
equal "the app is launched in each" "$(background "$app"; background "$app")" "$(launches)"
in_order "the main loop comes after" "rAppID : $app, bEnable : 1" "SMART_DEADLOCK CallbackId"
main_loop_done
equal "and hears then what happened meanwhile" "init load preload" "$(heard)"

echo "the app quits"
refresh
pid=$(tv app list --json | jq --arg app "$app" '.[] | select(.id == $app).pid')
forget_log; tv app status "$app" quit
reached "the replacement UI answers again" "$bridged"
tv key set db/tellahub/reset/apps 1
make_wgt "$work/ordinary.wgt" ordinary77 1.0.0 ''; tv pkg install "$work/ordinary.wgt"
reached "the app is launched again" "$(app_is "$app" ".status == \"preload\" and .pid != $pid")"
reached "and takes over" "$served"
equal "the road" "$road" "$(op_changes)"
equal "after the whole 20 seconds, for its words wait behind the one that blocks" 20 "$(waited | cut -d. -f1)"
main_loop_done
in_order "a change of another key had to wait too" "rAppID : $app, bEnable : 1" "VCONFKEY_TELLAHUB_RESET value 1"
in_order "and so had a package event" "rAppID : $app, bEnable : 1" "[Info] event_type[1000]"
equal "then the words come" "quit init load preload" "$(heard)"
equal "launched once, in the background" "$(background "$app")" "$(launches)"
logged "the check finds it alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"

echo "the app is not up in time"
uninstall guidebackg
forget_log; tv fail app_control_send_launch_request 0xFEF00023
tv pkg install "$ORV_SAMPLES/guide-background.wgt"
reached "the replacement UI answers" "$bridged"
main_loop_done
passed "the main loop goes on meanwhile"
tv pkg update "$work/ordinary.wgt"
reached "the app takes over all the same" "$served"
equal "after 20 seconds" 20 "$(waited | cut -d. -f1)"
installer_done
in_order "the next package event was taken in" "[Info] event_type[1001]" "rAppID : $app, bEnable : 1"
in_order "and handled after that" "rAppID : $app, bEnable : 1" "[Info] pEvent : 1001"
logged "rejected launches are tried again" "[Info] count = 4"
tv fail --clear
reached "until one is taken" "$(app_is "$app" '.status == "preload"')"
equal "the subscription is still the one of before the stop" "" "$(subscriptions)"
logged "so the retry finds it there" "[Debug] Already regitered."

echo "stopped"
forget_log; uninstall guidebackg
equal "the operations are not handed back but taken over" "$road" "$(op_changes)"
equal "by an app that is no more" "channel-list=$app epg=$app" "$(answers)"
key_is "its announcement is empty" '"CustomApp":{}'
equal "its words are still listened to" "" "$(subscriptions)"
forget_log; old=$(tv status --json | jq .daemon.pid)
tv key set "rtc/memory/WebApp/$app" resume; tv key set "rtc/memory/WebApp/$app" quit; main_loop_done
equal "and heard" "resume quit" "$(heard)"
equal "by nobody" "" "$(op_changes)$(launches)"
equal "the daemon lives" "$old" "$(tv status --json | jq .daemon.pid)"

echo "what the file holds"
tv op reset channel-list; tv op reset epg
tv fail app_control_send_launch_request 0xFEF00021
try() { # WHAT TEXT CHANGES LOG-TEXT LAUNCHES
  replacement "$2"; forget_log
  install "$ORV_SAMPLES/guide-background.wgt"
  equal "$1" "$3" "$(op_changes)"
  logged "$1: it is said so" "$4"
  equal "$1: launches" "$5" "$(launches)"
  uninstall guidebackg; tv op reset channel-list; tv op reset epg
}
tried=$(background "$app" -17825759)
took="channel-list=$app epg=$app"
try "a broken file" '{"appid":' "" "[ERROR] Invalid Json String." ""
try "an empty file" '' "" "[ERROR] Invalid Json String." ""
try "a list" '[1]' "" "[ERROR] Exception Caught" ""
try "an id that is no text" '{"appid":{}}' "" "[ERROR] Exception Caught" ""
try "blanks in the id" '{ "appid" : " com. example .layout " }' \
  "channel-list=com.example.layout epg=com.example.layout $took" "[Debug] sLayoutAppID : com.example.layout" "$tried"
try "no id, and nobody answers" '{}' "$took" "[Debug] sLayoutAppID : " "$tried"
tv op set channel-list somebody.else; tv op set epg somebody.else
try "no id, and somebody answers" '{"app":"x"}' "channel-list= epg= $took" "[Debug] sLayoutAppID : " "$tried"
rm "$REPLACEMENT"; mkdir "$REPLACEMENT"; forget_log
install "$ORV_SAMPLES/guide-background.wgt"
logged "a directory in its place is as good as no file" "[ERROR] Invalid Json String."
the_end
