#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The cold-boot option "background_img": a replacement UI owns the screens until the app is up, for at
# most 20 seconds, and again after the app has quit.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/custom_ui.sh"

app=guidebackg.Guide
layout=replaceui1.Layout
bridged='(.operations | length == 2) and (.operations | all(.app == "'$layout'"))'
served='(.operations | length == 2) and (.operations | all(.app == "'$app'"))'
changes="channel-list=$layout epg=$layout channel-list=$app epg=$app"
# waited: seconds on the daemon's clock from each takeover by the replacement UI to that by the app.
waited() {
  tv log --json | jq -rs --arg layout "$layout" --arg app "$app" '
    def seconds: .time[6:] | split(":") | (.[0] | tonumber) * 3600 + (.[1] | tonumber) * 60 + (.[2] | tonumber);
    [.[] | select(.text | test("rOperation : .*/epg, .*bEnable : 1"))] as $turns
    | [range(0; $turns | length) as $i
       | select(($turns[$i].text | contains("rAppID : " + $layout + ",")) and ($turns[$i + 1].text // "" | contains("rAppID : " + $app + ",")))
       | ($turns[$i + 1] | seconds) - ($turns[$i] | seconds) | if . < 0 then . + 86400 else . end]
    | .[]'
}
# in_order WHAT FIRST SECOND: the first text is in the log before the second.
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
reached "the replacement UI owns the screens first" "$bridged"
key_is "the app is announced" "$(screens guidebackg "$app" background_img)"
reached "the app is loaded" "$(app_is "$app" '.status == "preload"')"
tv app status "$app" resume
reached "the app comes to the front and takes over at once" "$served"
installer_done
silent "the check for a low-memory kill has not run yet" "[Info] m_iCurrentWebAppStatus"
equal "all changes of the operations" "$changes" "$(op_changes)"
equal "the app is launched once, in the background" "$(background "$app")" "$(launches)"
logged "the replacement UI is read" "[Debug] sLayoutAppID : $layout"
[ "$(waited | cut -d. -f1)" -lt 19 ] || die "it waited $(waited) s"; passed "it waited much less than 20 seconds"
threads() { tv log --json | jq -r --arg text "$1" 'select(.text | contains($text)).tid' | sort -u | paste -s -d' '; }
worker=$(threads "bEnable : 1")
case "$worker" in *" "*) die "the operations were set by several threads: $worker" ;; esac
[ "$worker" != "$(threads "pEvent : 1000" | cut -d' ' -f1)" ] && [ "$worker" != "$(tv status --json | jq .daemon.pid)" ] ||
  die "the operations were set by thread $worker, which is not a worker"
passed "a worker thread sets the operations"
tv down

echo "the TV is switched on"
forget_log; tv up --speed 5
reached "a start runs the app in two passes, before the main loop" '.daemon.state == "ready"'
equal "each pass waits the full 20 seconds: no status can arrive yet" "20 20" "$(waited | cut -d. -f1 | paste -s -d' ')"
equal "each pass makes the same changes" "$changes $changes" "$(op_changes)"
equal "each pass launches the app" "$(background "$app"; background "$app")" "$(launches)"
in_order "the main loop starts afterwards" "rAppID : $app, bEnable : 1" "SMART_DEADLOCK CallbackId"
main_loop_done
equal "the main loop then reads the statuses of the meantime" "init load preload" "$(statuses_read)"

echo "the app quits"
refresh
pid=$(tv app list --json | jq --arg app "$app" '.[] | select(.id == $app).pid')
forget_log; tv app status "$app" quit
reached "the replacement UI owns the screens again" "$bridged"
tv key set db/tellahub/reset/apps 1
make_wgt "$work/ordinary.wgt" ordinary77 1.0.0 ''; tv pkg install "$work/ordinary.wgt"
reached "the app is launched again" "$(app_is "$app" ".status == \"preload\" and .pid != $pid")"
reached "the app takes over" "$served"
equal "all changes of the operations" "$changes" "$(op_changes)"
equal "the takeover waits the full 20 seconds: statuses queue behind the waiting callback" 20 "$(waited | cut -d. -f1)"
main_loop_done
in_order "a change of another key waits too" "rAppID : $app, bEnable : 1" "VCONFKEY_TELLAHUB_RESET value 1"
in_order "a package event waits too" "rAppID : $app, bEnable : 1" "[Info] event_type[1000]"
equal "then the statuses are read" "quit init load preload" "$(statuses_read)"
equal "the app is launched once, in the background" "$(background "$app")" "$(launches)"
logged "the check finds the app alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"

echo "the app is not up in time"
uninstall guidebackg
forget_log; tv fail app_control_send_launch_request 0xFEF00023
tv pkg install "$ORV_SAMPLES/guide-background.wgt"
reached "the replacement UI owns the screens" "$bridged"
main_loop_done
passed "the main loop keeps running meanwhile"
tv pkg update "$work/ordinary.wgt"
reached "the app takes over nevertheless" "$served"
equal "the app takes over after 20 seconds" 20 "$(waited | cut -d. -f1)"
installer_done
in_order "the next package event is queued" "[Info] event_type[1001]" "rAppID : $app, bEnable : 1"
in_order "it is handled after the takeover" "rAppID : $app, bEnable : 1" "[Info] pEvent : 1001"
logged "rejected launches are retried" "[Info] count = 4"
tv fail --clear
reached "a retry succeeds" "$(app_is "$app" '.status == "preload"')"
equal "the subscription from before the stop is kept" "" "$(subscriptions)"
logged "the retry finds the subscription" "[Debug] Already regitered."

echo "stopped"
forget_log; uninstall guidebackg
equal "the operations are not reset but taken over" "$changes" "$(op_changes)"
equal "the uninstalled app owns them" "channel-list=$app epg=$app" "$(answers)"
key_is "its announcement is empty" '"CustomApp":{}'
equal "the daemon still listens to its status" "" "$(subscriptions)"
forget_log; old=$(tv status --json | jq .daemon.pid)
tv key set "rtc/memory/WebApp/$app" resume; tv key set "rtc/memory/WebApp/$app" quit; main_loop_done
equal "the app's statuses are read" "resume quit" "$(statuses_read)"
equal "no layer handles the statuses" "" "$(op_changes)$(launches)"
equal "the daemon keeps running" "$old" "$(tv status --json | jq .daemon.pid)"

echo "contents of the file that names the replacement UI"
tv op reset channel-list; tv op reset epg
tv fail app_control_send_launch_request 0xFEF00021
try() { # WHAT TEXT CHANGES LOG-TEXT LAUNCHES
  replacement "$2"; forget_log
  install "$ORV_SAMPLES/guide-background.wgt"
  equal "$1" "$3" "$(op_changes)"
  logged "$1: the log" "$4"
  equal "$1: launches" "$5" "$(launches)"
  uninstall guidebackg; tv op reset channel-list; tv op reset epg
}
tried=$(background "$app" -17825759)
took="channel-list=$app epg=$app"
try "a broken file" '{"appid":' "" "[ERROR] Invalid Json String." ""
try "an empty file" '' "" "[ERROR] Invalid Json String." ""
try "an array" '[1]' "" "[ERROR] Exception Caught" ""
try "an id that is not a string" '{"appid":{}}' "" "[ERROR] Exception Caught" ""
try "spaces in the id" '{ "appid" : " com. example .layout " }' \
  "channel-list=com.example.layout epg=com.example.layout $took" "[Debug] sLayoutAppID : com.example.layout" "$tried"
try "no id, operations unowned" '{}' "$took" "[Debug] sLayoutAppID : " "$tried"
tv op set channel-list another.app; tv op set epg another.app
try "no id, operations owned by another app" '{"app":"x"}' "channel-list= epg= $took" "[Debug] sLayoutAppID : " "$tried"
rm "$REPLACEMENT"; mkdir "$REPLACEMENT"; forget_log
install "$ORV_SAMPLES/guide-background.wgt"
logged "a directory in its place counts as a missing file" "[ERROR] Invalid Json String."
the_end
