#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# How a web app is kept ready: launches that are rejected or fail, the low-memory killer, unknown
# statuses, two layers that follow one app, and two apps of which only one is followed.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/custom_ui.sh"

app=guidedeflt.Guide
other=guideinvis.Guide
status_key=rtc/memory/WebApp/$app
REJECTED=-17825757
NOT_FOUND=-17825759
FAILED=-17825756
launch_fails() { tv fail app_control_send_launch_request "$@"; }
counts() { log_texts | sed -n 's/^\[Info\] count = //p' | paste -s -d' '; }
checks_made() { log_texts | sed -n 's/^\[Info\] m_iCurrentWebAppStatus : \(.*\), count : /\1:/p' | paste -s -d' '; }
repeated() { i=0; while [ "$i" -lt "$1" ]; do printf '%s\n' "$2"; i=$((i + 1)); done; }
# fresh TITLE: no app of replaced screens is installed, and the daemon has just started.
fresh() {
  echo "$1"; tv fail --clear
  for installed in $(tv store --json | jq -r '.[].package_id'); do uninstall "$installed"; done
  tv daemon restart; forget_log
}
# seconds_between FIRST LAST: on the daemon's clock, between the first log lines that end with these texts.
seconds_between() {
  tv log --json | jq -rs --arg first "$1" --arg last "$2" '
    def at($text): [.[] | select(.text | endswith($text))][0].time[6:] | split(":")
      | (.[0] | tonumber) * 3600 + (.[1] | tonumber) * 60 + (.[2] | tonumber);
    at($last) - at($first) | if . < 0 then . + 86400 else . end | floor'
}
twenty_one="0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20"

tv up --speed 20

fresh "rejected until the retries are over"
launch_fails "$REJECTED" --times 22
install "$ORV_SAMPLES/guide-default.wgt"
equal "the app owns its operations despite rejected launches" "channel-list=$app epg=$app" "$(answers)"
reached "finally the app comes to the front" "$(app_is "$app" '.status == "resume"')"
equal "22 launches in the background, then one in the foreground" \
  "$(repeated 22 "$(background "$app" "$REJECTED")"; foreground "$app")" "$(launches)"
equal "each retry is counted" "$twenty_one" "$(counts)"
took=$(seconds_between "[Info] count = 0" "[Info] count = 20")
[ "$took" -ge 99 ] && [ "$took" -le 120 ] || die "twenty retries took $took s"
passed "the retries are five seconds apart"
equal "the daemon does not listen to its status" "" "$(subscriptions)$(statuses_read)"

fresh "rejected twice"
launch_fails "$REJECTED" --times 3
install "$ORV_SAMPLES/guide-default.wgt"
reached "the third retry loads it" "$(app_is "$app" '.status == "preload"')"
logged "the app's status is read" "[Debug] sAppStatus = preload"
equal "three retries" "0 1 2" "$(counts)"
equal "the retry subscribes to its status" "+$app" "$(subscriptions)"

fresh "rejected, and not found by a retry"
launch_fails "$REJECTED" --times 2; launch_fails "$NOT_FOUND"
install "$ORV_SAMPLES/guide-default.wgt"
logged "the launch is retried twice" "[Info] count = 1"
logged "the second retry does not find the app" "(Error Message[$NOT_FOUND] : App Not Found"
main_loop_done
equal "two rejected launches, then one that finds no app" "$(repeated 2 "$(background "$app" "$REJECTED")"; background "$app" "$NOT_FOUND")" "$(launches)"
silent "the retries end without an error" "[ERROR] Cannot find target app."

fresh "app not found"
launch_fails "$NOT_FOUND" --times 1
install "$ORV_SAMPLES/guide-default.wgt"
logged "the error is logged" "[ERROR] Cannot find target app."
equal "an app of screens is then launched in the foreground" "$(background "$app" "$NOT_FOUND"; foreground "$app")" "$(launches)"
reached "the app comes to the front" "$(app_is "$app" '.status == "resume"')"
equal "the daemon does not listen to its status" "" "$(subscriptions)"
equal "the app owns its operations nevertheless" "channel-list=$app epg=$app" "$(answers)"
forget_log; launch_fails "$NOT_FOUND" --times 1
install "$ORV_SAMPLES/banner.wgt"
equal "an app of banners is not launched again" "$(background bannerapp1.Banner "$NOT_FOUND")" "$(launches)"
key_is "the app of banners is announced" "$(screens guidedeflt "$app" default),$(banner bannerapp1 bannerapp1.Banner info,channel default)"

fresh "a launch that fails"
launch_fails "$FAILED" --times 1
install "$ORV_SAMPLES/guide-default.wgt"
logged "the error is logged" "[ERROR] SendRequestforPreloading() failed."
equal "the app is launched in the foreground" "$(background "$app" "$FAILED"; foreground "$app")" "$(launches)"

fresh "killed repeatedly by the low-memory killer"
install "$ORV_SAMPLES/guide-default.wgt"
logged "the check finds the app alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
tv app status "$app" resume; main_loop_done; forget_log
launch_fails "$REJECTED"
loaded_and_killed() { tv app status "$app" preload; tv app kill "$app"; }
frozen loaded_and_killed
logged "the daemon gives up after 21 relaunches" "[Info] m_iCurrentWebAppStatus : 5, count : 21"
main_loop_done
equal "one check for each relaunch, and the last one" \
  "$(for count in $twenty_one 21; do echo "5:$count"; done | paste -s -d' ')" "$(checks_made)"
equal "21 relaunches, whose results are ignored" "$(repeated 21 "$(background "$app" "$REJECTED")")" "$(launches)"
equal "only two statuses were read" "preload destroy" "$(statuses_read)"
equal "the operations are kept" "channel-list=$app epg=$app" "$(answers)"
tv fail --clear; forget_log
tv app launch "$app"
logged "the status after a launch by hand is read" "[Debug] sAppStatus = resume"
tv app status "$app" preload
logged "the checks start again" "[Info] m_iCurrentWebAppStatus : 2, count : 0"

fresh "quits without ever being shown"
install "$ORV_SAMPLES/guide-default.wgt"
logged "the check finds the app alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
forget_log; tv app status "$app" quit; main_loop_done
logged "the check counts as still running" "[Debug] LMKTimer is running."
equal "no layer is notified" 0 "$(count_log '[Info] rMetadataValue : ')"
equal "the app is not launched again" "" "$(launches)"

fresh "unknown statuses"
install "$ORV_SAMPLES/guide-default.wgt"
logged "the check finds the app alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
forget_log
tv key set "$status_key" dancing; tv key set -t string "$status_key" ""; tv key set -t string "$status_key" "resume "; tv key set -t int "$status_key" 3
tv key unset "$status_key"; main_loop_done
equal "each makes the status invalid" 5 "$(count_log '[Debug] m_iCurrentWebAppStatus is invalid.')"
equal "they have no other effect" "" "$(launches)$(op_changes)$(checks_made)"
forget_log; tv key set -t string "$status_key" resume; main_loop_done
equal "a known status is read again" resume "$(statuses_read)"
silent "a known status is valid" "m_iCurrentWebAppStatus is invalid."

fresh "two layers that follow one app"
install "$ORV_SAMPLES/banner-and-guide.wgt"
logged "the check finds the app alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
equal "one subscription" "+bannerguid.App" "$(subscriptions)"
tv app status bannerguid.App resume; main_loop_done; forget_log
tv app status bannerguid.App quit; main_loop_done
equal "the layer of the screens is notified" 1 "$(count_log '[Info] rMetadataValue : epg')"
equal "the layer of the banners is not notified" 0 "$(count_log '[Info] rMetadataValue : info')"
logged "without a replacement UI the layer stops there" "[ERROR] Invalid Json String."
equal "the app is not launched again" "" "$(launches)"

fresh "a second app of screens"
install "$ORV_SAMPLES/guide-default.wgt"
logged "the check finds the first app alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
tv app status "$app" resume; main_loop_done
forget_log; install "$ORV_SAMPLES/guide-invisible.wgt"
reached "the second app is loaded" "$(app_is "$other" '.status == "preload"')"
equal "the second app owns the operations" "channel-list=$other epg=$other" "$(answers)"
equal "the second app's key is unsubscribed, though never subscribed" "-$other (-1)" "$(subscriptions)"
equal "the second app counts as subscribed" 1 "$(count_log '[Debug] Already regitered.')"
main_loop_done
equal "no status of the second app is read" "" "$(statuses_read)"
tv app status "$app" pause; main_loop_done
equal "the status of the first app is read" pause "$(statuses_read)"
forget_log; tv app status "$app" quit; main_loop_done
equal "a status of the first app goes to the layer of the second" 1 "$(count_log '[Info] rMetadataValue : channel_list,epg')"
logged "that layer looks for the replacement UI" "[ERROR] Invalid Json String."
forget_log; uninstall guideinvis
equal "the second app's removal unsubscribes its key again" "-$other (-1)" "$(subscriptions)"
equal "the second app's removal resets the operations" "" "$(answers)"
tv key set -t string "$status_key" resume; main_loop_done
equal "a status of the first app is now ignored" "" "$(statuses_read)"
forget_log; uninstall guidedeflt
equal "the removal of the first app resets no operation" "" "$(op_changes)"
logged "the removal of the first app finds no callback" "[Debug] Cannot find target callback function."

fresh "a status of the first app ends the wait for the second"
replacement "{\"appid\":\"$LAYOUT\"}"
tv down; tv up
install "$ORV_SAMPLES/guide-default.wgt"
reached "the first app is loaded" "$(app_is "$app" '.status == "preload"')"
forget_log; tv pkg install "$ORV_SAMPLES/guide-background.wgt"
reached "the replacement UI owns the screens" ".operations | all(.app == \"$LAYOUT\")"
reached "the second app is loaded" "$(app_is guidebackg.Guide '.status == "preload"')"
holds "the second app's statuses do not end the wait" ".operations | all(.app == \"$LAYOUT\")"
tv app status "$app" resume
reached "a status of the first app ends the wait" '.operations | all(.app == "guidebackg.Guide")' 10
installer_done
the_end
