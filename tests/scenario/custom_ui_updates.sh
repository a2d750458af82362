#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Updates of apps that replace screens of the TV: what takes effect, what waits for a restart of the
# daemon, and what is wiped.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/custom_ui.sh"

tv up --speed 5
option() { tv store --json | jq -r --arg p "$1" '.[] | select(.package_id == $p) | .variables.orv_data.custom_ui_cold_boot_opt'; }
types() { tv store --json | jq -c --arg p "$1" '.[] | select(.package_id == $p) | .variables.orv_type'; }
is_loaded() { reached "$1 is loaded" "$(app_is "$1" '.status == "preload"')"; }
banners() { # VERSION BANNERS OPTION
  ui_app "$work/banner.wgt" bannerupd1 "$1" custom_ui_standard "$2" "$3"; update "$work/banner.wgt"
}
banner_key() { key_is "$1" "$(banner bannerupd1 bannerupd1.App "$2" "$3")"; }

echo "banners, in one run of the daemon: the first values that were seen stay"
ui_app "$work/banner.wgt" bannerupd1 1.0.0 custom_ui_standard info,channel invisible
install "$work/banner.wgt"
banner_key "the option is announced" info,channel invisible
is_loaded bannerupd1.App
logged "the check finds it alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
forget_log; banners 1.0.1 channel background_img
banner_key "the first update wipes the option, the list stays" info,channel default
equal "wiped in the store as well" "" "$(option bannerupd1)"
equal "the staged value is the first one seen" 1 \
  "$(count_log '[Debug] Applied Metadata : info,channel, Updatable Metadata : info,channel')"
forget_log; banners 1.0.2 channel background_img
banner_key "the second update stages the first option and applies it" info,channel invisible
equal "and stores it" invisible "$(option bannerupd1)"
forget_log; banners 1.0.3 channel background_img
equal "the third finds no change and writes nothing" "" "$(calls '^vconf_set_str$')"
equal "and launches nothing" "" "$(launches)"

echo "banners, each update after a restart of the daemon"
tv daemon restart; forget_log; banners 1.1.0 channel background_img
banner_key "a new list takes effect, the option is wiped" channel default
equal "the app was killed for the update, and is launched again" "$(background bannerupd1.App)" "$(launches)"
tv daemon restart; forget_log; banners 1.1.1 channel,x ''
equal "an unknown name more is no change" "" "$(calls '^vconf_set_str$')"
tv daemon restart; forget_log; banners 1.1.2 channel,info ''
banner_key "another name is one" channel,info default
tv daemon restart; forget_log; banners 1.1.3 info,channel ''
banner_key "and so is another order" info,channel default
tv daemon restart; forget_log
make_wgt "$work/banner.wgt" bannerupd1 1.2.0 ''; update "$work/banner.wgt"
key_is "an update without the metadata is a removal" '"CustomBanner":{}'
holds "the row is gone" '.store | length == 0'

echo "screens, each update after a restart of the daemon"
guide() { # VERSION SCREENS OPTION
  ui_app "$work/guide.wgt" guideupda1 "$1" custom_ui_extended "$2" "$3"
}
guide_key() { equal "$1" "{$(screens guideupda1 guideupda1.App "$2"),\"CustomBanner\":{}}|." "$(ui_key)"; }
guide 1.0.0 epg invisible; install "$work/guide.wgt"
guide_key "the option is announced" invisible
is_loaded guideupda1.App
tv daemon restart; forget_log; guide 1.0.1 channel_list default; update "$work/guide.wgt"
equal "the old screen is handed back and the new one taken" "epg reset channel-list=guideupda1.App" "$(op_changes)"
equal "the app is let go and followed again" "-guideupda1.App (0) +guideupda1.App" "$(subscriptions)"
guide_key "the announcement keeps the option of the last run" invisible
equal "the option itself is wiped" "" "$(option guideupda1)"
forget_log; guide 1.0.2 channel_list default; update "$work/guide.wgt"
equal "the second update stages the option" default "$(option guideupda1)"
equal "which is a change" "channel-list reset channel-list=guideupda1.App" "$(op_changes)"
forget_log; guide 1.0.3 channel_list default; update "$work/guide.wgt"
equal "the third update changes nothing" "" "$(op_changes)"
tv daemon restart; forget_log; guide 1.0.4 channel_list,x ''; update "$work/guide.wgt"
equal "an unknown name more is a change of the text" "channel-list reset channel-list=guideupda1.App" "$(op_changes)"
tv op set channel-list somebody.else
tv daemon restart; forget_log; tv op set channel-list somebody.else
guide 1.0.5 epg,x ''; update "$work/guide.wgt"
equal "what another app answers is not taken away from it" "epg=guideupda1.App" "$(op_changes)"
equal "and it goes on" "channel-list=somebody.else epg=guideupda1.App" "$(answers)"
uninstall guideupda1
equal "uninstall hands back its own alone" "channel-list=somebody.else" "$(answers)"
tv op reset channel-list

echo "an option that comes alone, later"
replacement "{\"appid\":\"$LAYOUT\"}"
guide 2.0.0 epg ''; install "$work/guide.wgt"
is_loaded guideupda1.App
guide 2.0.1 epg ''; update "$work/guide.wgt"
forget_log; guide 2.0.2 epg background_img; update "$work/guide.wgt"
equal "handed back directly and taken over by way of the replacement UI" \
  "epg reset epg=$LAYOUT epg=guideupda1.App" "$(op_changes)"
guide_key "the announcement still has the option of the run" default
uninstall guideupda1
tv op reset epg

echo "types that come and go"
both() { make_wgt "$work/both.wgt" bothtypes1 "$1" "$(metadata orv_type custom_ui_standard info; metadata orv_type custom_ui_extended epg)"; }
one() { ui_app "$work/both.wgt" bothtypes1 "$1" "$2" "$3"; }
one 1.0.0 custom_ui_standard info; install "$work/both.wgt"
tv daemon restart; forget_log; both 1.0.1; update "$work/both.wgt"
logged "a type more is added" "[Debug] [Additional] first : custom_ui_extended, second : epg"
equal "outside of what the cache holds, so it does not run" "" "$(op_changes)"
equal "and is not stored" '{"custom_ui_standard":"info"}' "$(types bothtypes1)"
uninstall bothtypes1
both 2.0.0; install "$work/both.wgt"
is_loaded bothtypes1.App
before=$(ui_key)
tv daemon restart; forget_log; one 2.0.1 custom_ui_standard info; update "$work/both.wgt"
logged "a type less is taken out" "[Debug] [Removable] first : custom_ui_extended, second : epg"
equal "stored so" '{"custom_ui_standard":"info"}' "$(types bothtypes1)"
equal "without a stop: its announcement stays" "$before" "$(ui_key)"
equal "and it still answers" "epg=bothtypes1.App" "$(answers)"
pid=$(tv status --json | jq .daemon.pid)
tv app launch bothtypes1.App; reached "the app comes to the front" "$(app_is bothtypes1.App '.status == "resume"')"
forget_log; tv app status bothtypes1.App quit; main_loop_done
equal "the state is heard by the layer that is no more" "quit" "$(heard)"
equal "nothing comes of it" "" "$(op_changes)$(launches)"
equal "the daemon lives" "$pid" "$(tv status --json | jq .daemon.pid)"
the_end
