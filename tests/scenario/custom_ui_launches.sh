#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# How a web app is kept ready: launches that are rejected or fail, the low-memory killer, words that
# nobody knows, two layers that follow one app, and two apps of which only one is followed.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/custom_ui.sh"

app=guidedeflt.Guide
other=guideinvis.Guide
word=rtc/memory/WebApp/$app
REJECTED=-17825757
NOT_FOUND=-17825759
FAILED=-17825756
launch_fails() { tv fail app_control_send_launch_request "$@"; }
counts() { log_texts | sed -n 's/^\[Info\] count = //p' | paste -s -d' '; }
checks_made() { log_texts | sed -n 's/^\[Info\] m_iCurrentWebAppStatus : \(.*\), count : /\1:/p' | paste -s -d' '; }
repeated() { i=0; while [ "$i" -lt "$1" ]; do printf '%s\n' "$2"; i=$((i + 1)); done; }
# fresh: an app that nothing is known of, in a daemon that knows nothing.
fresh() {
  echo "$1"; tv fail --clear
  for installed in $(tv store --json | jq -r '.[].package_id'); do uninstall "$installed"; done
  tv daemon restart; forget_log
}
# seconds_between FIRST LAST: by the daemon's clock, from the first line with the one text to that with the other.
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
equal "a rejected launch does not keep the operations back" "channel-list=$app epg=$app" "$(answers)"
reached "in the end the app comes to the front" "$(app_is "$app" '.status == "resume"')"
equal "22 times in the background, then in the foreground" \
  "$(repeated 22 "$(background "$app" "$REJECTED")"; foreground "$app")" "$(launches)"
equal "each retry is counted" "$twenty_one" "$(counts)"
took=$(seconds_between "[Info] count = 0" "[Info] count = 20")
[ "$took" -ge 99 ] && [ "$took" -le 120 ] || die "twenty retries took $took s"
passed "one each five seconds"
equal "nobody listens to its words" "" "$(subscriptions)$(heard)"

fresh "rejected twice"
launch_fails "$REJECTED" --times 3
install "$ORV_SAMPLES/guide-default.wgt"
reached "the third retry loads it" "$(app_is "$app" '.status == "preload"')"
logged "its words are heard" "[Debug] sAppStatus = preload"
equal "the retries" "0 1 2" "$(counts)"
equal "subscribed by the retry" "+$app" "$(subscriptions)"

fresh "rejected, and gone when it is tried again"
launch_fails "$REJECTED" --times 2; launch_fails "$NOT_FOUND"
install "$ORV_SAMPLES/guide-default.wgt"
logged "the second retry" "[Info] count = 1"
logged "does not find it" "(Error Message[$NOT_FOUND] : App Not Found"
main_loop_done
equal "launches" "$(repeated 2 "$(background "$app" "$REJECTED")"; background "$app" "$NOT_FOUND")" "$(launches)"
silent "the retries end quietly" "[ERROR] Cannot find target app."

fresh "no such app"
launch_fails "$NOT_FOUND" --times 1
install "$ORV_SAMPLES/guide-default.wgt"
logged "it is said so" "[ERROR] Cannot find target app."
equal "an app of screens is launched in the plain way then" "$(background "$app" "$NOT_FOUND"; foreground "$app")" "$(launches)"
reached "and comes to the front" "$(app_is "$app" '.status == "resume"')"
equal "nobody listens" "" "$(subscriptions)"
equal "the operations are its own all the same" "channel-list=$app epg=$app" "$(answers)"
forget_log; launch_fails "$NOT_FOUND" --times 1
install "$ORV_SAMPLES/banner.wgt"
equal "an app of banners is not" "$(background bannerapp1.Banner "$NOT_FOUND")" "$(launches)"
key_is "but announced" "$(screens guidedeflt "$app" default),$(banner bannerapp1 bannerapp1.Banner info,channel default)"

fresh "a launch that fails"
launch_fails "$FAILED" --times 1
install "$ORV_SAMPLES/guide-default.wgt"
logged "it is said so" "[ERROR] SendRequestforPreloading() failed."
equal "launched in the plain way" "$(background "$app" "$FAILED"; foreground "$app")" "$(launches)"

fresh "killed for want of memory, again and again"
install "$ORV_SAMPLES/guide-default.wgt"
logged "the check finds it alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
tv app status "$app" resume; main_loop_done; forget_log
launch_fails "$REJECTED"
loaded_and_killed() { tv app status "$app" preload; tv app kill "$app"; }
frozen loaded_and_killed
logged "after 21 relaunches it is given up" "[Info] m_iCurrentWebAppStatus : 5, count : 21"
main_loop_done
equal "one check for each, and the last" \
  "$(for count in $twenty_one 21; do echo "5:$count"; done | paste -s -d' ')" "$(checks_made)"
equal "21 relaunches, whose result is not looked at" "$(repeated 21 "$(background "$app" "$REJECTED")")" "$(launches)"
equal "no word but the two was heard" "preload destroy" "$(heard)"
equal "the operations stay" "channel-list=$app epg=$app" "$(answers)"
tv fail --clear; forget_log
tv app launch "$app"
logged "a launch by somebody else is heard of" "[Debug] sAppStatus = resume"
tv app status "$app" preload
logged "and the checks begin anew" "[Info] m_iCurrentWebAppStatus : 2, count : 0"

fresh "it quits, and has never been shown"
install "$ORV_SAMPLES/guide-default.wgt"
logged "the check finds it alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
forget_log; tv app status "$app" quit; main_loop_done
logged "the check is taken for running" "[Debug] LMKTimer is running."
equal "so nobody is told" 0 "$(count_log '[Info] rMetadataValue : ')"
equal "and it stays down" "" "$(launches)"

fresh "words that nobody knows"
install "$ORV_SAMPLES/guide-default.wgt"
logged "the check finds it alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
forget_log
tv key set "$word" dancing; tv key set -t string "$word" ""; tv key set -t string "$word" "resume "; tv key set -t int "$word" 3
tv key unset "$word"; main_loop_done
equal "each makes the status invalid" 5 "$(count_log '[Debug] m_iCurrentWebAppStatus is invalid.')"
equal "and does nothing else" "" "$(launches)$(op_changes)$(checks_made)"
forget_log; tv key set -t string "$word" resume; main_loop_done
equal "a known one is known again" resume "$(heard)"
silent "for what it is" "m_iCurrentWebAppStatus is invalid."

fresh "two layers that follow one app"
install "$ORV_SAMPLES/banner-and-guide.wgt"
logged "the check finds it alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
equal "one subscription" "+bannerguid.App" "$(subscriptions)"
tv app status bannerguid.App resume; main_loop_done; forget_log
tv app status bannerguid.App quit; main_loop_done
equal "the layer of the screens is told" 1 "$(count_log '[Info] rMetadataValue : epg')"
equal "the layer of the banners wants to hear nothing" 0 "$(count_log '[Info] rMetadataValue : info')"
logged "without a replacement UI it goes no further" "[ERROR] Invalid Json String."
equal "so the app stays down" "" "$(launches)"

fresh "another app is followed instead"
install "$ORV_SAMPLES/guide-default.wgt"
logged "the check finds the first alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
tv app status "$app" resume; main_loop_done
forget_log; install "$ORV_SAMPLES/guide-invisible.wgt"
reached "the second is loaded" "$(app_is "$other" '.status == "preload"')"
equal "the second answers" "channel-list=$other epg=$other" "$(answers)"
equal "its own key, which nobody listened to, is let go of" "-$other (-1)" "$(subscriptions)"
equal "and it is taken for listened to" 1 "$(count_log '[Debug] Already regitered.')"
main_loop_done
equal "so none of its words is heard" "" "$(heard)"
tv app status "$app" pause; main_loop_done
equal "but those of the first are" pause "$(heard)"
forget_log; tv app status "$app" quit; main_loop_done
equal "and go to the layer of the second" 1 "$(count_log '[Info] rMetadataValue : channel_list,epg')"
logged "which would put the replacement UI in place" "[ERROR] Invalid Json String."
forget_log; uninstall guideinvis
equal "its end lets go of its own key again" "-$other (-1)" "$(subscriptions)"
equal "and hands the operations back" "" "$(answers)"
tv key set -t string "$word" resume; main_loop_done
equal "a word of the first is passed over now" "" "$(heard)"
forget_log; uninstall guidedeflt
equal "the end of the first finds nothing to hand back" "" "$(op_changes)"
logged "and no callback" "[Debug] Cannot find target callback function."

fresh "a word of the first app ends the wait for the second"
replacement "{\"appid\":\"$LAYOUT\"}"
tv down; tv up
install "$ORV_SAMPLES/guide-default.wgt"
reached "the first is loaded" "$(app_is "$app" '.status == "preload"')"
forget_log; tv pkg install "$ORV_SAMPLES/guide-background.wgt"
reached "the replacement UI answers" ".operations | all(.app == \"$LAYOUT\")"
reached "the second is loaded" "$(app_is guidebackg.Guide '.status == "preload"')"
holds "its words do not help it" ".operations | all(.app == \"$LAYOUT\")"
tv app status "$app" resume
reached "those of the first do" '.operations | all(.app == "guidebackg.Guide")' 10
installer_done
the_end
